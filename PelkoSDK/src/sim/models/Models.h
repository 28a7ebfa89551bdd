#ifndef PKOAPI_SRC_MODELS_H
#define PKOAPI_SRC_MODELS_H

// The ready-made simulated cameras, one function per model (see
// Sim::CreateModel for the IDs). Each returns a new, closed camera.

#include <PkoAPI/Sim/SimCamera.h>

namespace ZMT::PkoAPI::Sim {

SimCameraPtr BuildLineRoutingModel();
SimCameraPtr BuildLineSfncModel();
SimCameraPtr BuildSyncOutModel();
SimCameraPtr BuildLineOutModel();
SimCameraPtr BuildNoTriggerModel();

}  // namespace ZMT::PkoAPI::Sim

#endif
