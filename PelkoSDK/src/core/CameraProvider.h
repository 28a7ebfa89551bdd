#ifndef PKOAPI_SRC_CORE_CAMERAPROVIDER_H
#define PKOAPI_SRC_CORE_CAMERAPROVIDER_H

#include <PkoAPI/Camera.h>

#include <memory>
#include <string>
#include <vector>

namespace ZMT::PkoAPI {

// One backend's way to its cameras. PkoSystem asks every provider in turn
// and knows none of them: that keeps the core free of the backends. A
// provider hands out the same object for the same camera every time, so
// every client of a camera shares it. Providers are called from any thread.
class CameraProvider {
public:
    virtual ~CameraProvider() = default;

    // Appends every camera the backend reaches now; may take a while (a
    // network discovery). Throws std::bad_alloc only; cameras may then hold
    // part of the list.
    virtual void AppendCameras(std::vector<CameraPtr>& cameras) = 0;
    // The camera with that ID, or null when this backend has none by that
    // ID. Throws std::bad_alloc only.
    virtual CameraPtr FindCamera(const std::string& id) = 0;
};

// The library's providers in the order PkoSystem lists their cameras.
// Defined where the backends are put together, outside the core.
std::vector<std::unique_ptr<CameraProvider>> MakeCameraProviders();

// The camera of that ID in cameras, or null.
CameraPtr FindByID(const std::vector<CameraPtr>& cameras, const std::string& id);

}  // namespace ZMT::PkoAPI

#endif
