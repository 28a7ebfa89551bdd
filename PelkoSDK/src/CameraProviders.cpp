// Where the library's parts meet: the one place that knows both backends.

#include "ArvCameraProvider.h"
#include "SimCameraProvider.h"

namespace ZMT::PkoAPI {

std::vector<std::unique_ptr<CameraProvider>> MakeCameraProviders()
{
    std::vector<std::unique_ptr<CameraProvider>> providers;
    // Simulated models first: they are always there and list at once.
    providers.push_back(std::make_unique<Sim::SimCameraProvider>());
    providers.push_back(std::make_unique<Arv::ArvCameraProvider>());
    return providers;
}

}  // namespace ZMT::PkoAPI
