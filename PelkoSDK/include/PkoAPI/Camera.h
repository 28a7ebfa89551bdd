#ifndef PKOAPI_CAMERA_H
#define PKOAPI_CAMERA_H

#include <PkoAPI/Feature.h>
#include <PkoAPI/Frame.h>
#include <PkoAPI/PkoCommonTypes.h>
#include <PkoAPI/SharedPointer.h>

#include <string>
#include <vector>

namespace ZMT {
namespace PkoAPI {

// A camera found by PkoSystem. Same general contract as Feature: error codes,
// no exceptions, outputs unchanged on failure, callable from any thread.
class Camera {
public:
    virtual ~Camera() = default;

    // Identifier that PkoSystem::GetCameraByID accepts, e.g. "SIM-LINE-ROUTING".
    virtual int GetID(std::string& id) const = 0;
    // Model name as the camera reports it.
    virtual int GetModel(std::string& model) const = 0;
    // Readable name for camera lists.
    virtual int GetName(std::string& name) const = 0;

    // Opening an open camera, or closing a closed one, succeeds and does nothing.
    // Close returns at once, also on a camera that stopped answering: from its
    // return on the camera's calls fail with PkoErrorDeviceNotOpen, its
    // features' with PkoErrorBadHandle, and no observer is called (a callback
    // in progress is waited for). A camera may finish releasing the device in
    // the background; opening it again waits for that.
    virtual int Open() = 0;
    virtual int Close() = 0;
    virtual bool IsOpen() const = 0;
    // Why the last Open failed, in words, where the camera knows more than
    // its error code says (PkoErrorBadDescription: where the description
    // stops parsing, which nodes form a cycle); empty after a successful
    // Open or when there is nothing to add.
    virtual int GetOpenProblem(std::string& problem) const
    {
        problem.clear();
        return PkoErrorSuccess;
    }

    // Every feature of the open camera in the camera's order (categories
    // first-come), replacing the contents of features.
    // PkoErrorDeviceNotOpen when the camera is not open.
    virtual int GetFeatures(std::vector<FeaturePtr>& features) = 0;
    // The first feature of that exact (case-sensitive) name; PkoErrorNotFound.
    virtual int GetFeatureByName(const char* name, FeaturePtr& feature) = 0;

    // Run the camera's "AcquisitionStart" / "AcquisitionStop" commands.
    virtual int StartAcquisition() = 0;
    virtual int StopAcquisition() = 0;
    // Whether the camera is acquiring (it may stop by itself, e.g. after
    // the frames of a multi-frame acquisition).
    virtual bool IsAcquiring() const = 0;
    // Frames delivered since the camera was opened.
    virtual unsigned long long FramesDelivered() const = 0;

    // The newest complete frame, converted to 8-bit grey, replacing frame.
    // PkoErrorNotFound while the camera has delivered none since it was
    // opened, PkoErrorDeviceNotOpen when it is closed; frame is unchanged on
    // failure. Cheap enough to call from a display timer.
    virtual int GetLatestFrame(Frame& frame) = 0;

    // True once the open camera has stopped answering (unplugged, switched
    // off, network gone). From then on every operation of the camera and its
    // features fails at once with PkoErrorConnectionLost; Close and Open
    // again to retry. False for a closed camera.
    virtual bool IsConnectionLost() const = 0;

protected:
    Camera() = default;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;
};

typedef shared_ptr<Camera> CameraPtr;

}  // namespace PkoAPI
}  // namespace ZMT

#endif
