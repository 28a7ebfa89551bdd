#include "FakeCameraLookup.h"

ZMT::PkoAPI::CameraPtr FindFakeCamera(const QString& serial)
{
    ZMT::PkoAPI::PkoSystem& system = ZMT::PkoAPI::PkoSystem::GetInstance();
    for (const QString& id : {"ARV:Aravis-Fake-" + serial, QStringLiteral("ARV:127.0.0.1")}) {
        ZMT::PkoAPI::CameraPtr camera;
        if (system.GetCameraByID(id.toLatin1().constData(), camera) == 0 && camera)
            return camera;
    }
    return ZMT::PkoAPI::CameraPtr();
}
