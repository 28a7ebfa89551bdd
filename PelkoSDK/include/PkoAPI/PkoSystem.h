#ifndef PKOAPI_PKOSYSTEM_H
#define PKOAPI_PKOSYSTEM_H

#include <PkoAPI/Camera.h>
#include <PkoAPI/PkoCommonTypes.h>

#include <memory>
#include <string>
#include <vector>

namespace ZMT {
namespace PkoAPI {

class CameraProvider;

// Entry point of the SDK: the list of cameras the machine can reach.
// The simulated models are always present. Each ID maps to one Camera object
// for the lifetime of the process, so every client of a camera shares it.
class PkoSystem {
public:
    static PkoSystem& GetInstance();

    // Every camera, simulated models first, then every camera Aravis finds
    // now (GigE Vision, USB3 Vision), replacing the contents of cameras. The
    // search for real cameras takes about a second.
    int GetCameras(std::vector<CameraPtr>& cameras);
    // PkoErrorNotFound for an unknown ID, PkoErrorBadParameter for null.
    // Real cameras have the ID "ARV:" + Aravis's device id (for example
    // "ARV:Aravis-Fake-GV01"); "ARV:" + anything Aravis can open, such as a
    // camera's address, is accepted too.
    int GetCameraByID(const char* id, CameraPtr& camera);

private:
    PkoSystem();
    ~PkoSystem();
    PkoSystem(const PkoSystem&) = delete;
    PkoSystem& operator=(const PkoSystem&) = delete;
    // One per backend; fixed after construction.
    std::vector<std::unique_ptr<CameraProvider>> m_Providers;
};

}  // namespace PkoAPI
}  // namespace ZMT

#endif
