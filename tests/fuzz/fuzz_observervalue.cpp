// The feature observer's value text: a simulated camera hands it features of
// every type holding whatever value the input makes, and the observer reads
// and formats them without crashing.

#include "PluginFeatureObserver.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

using namespace ZMT::PkoAPI;

namespace {

// One camera for the whole run: the input only changes its values.
Sim::SimCameraPtr FuzzCamera()
{
    static Sim::SimCameraPtr camera = [] {
        Sim::CameraBuilder builder("FUZZ", "Fuzz");
        builder.AddString("Text", "");
        builder.AddInteger("Integer", 0, -(1LL << 62), 1LL << 62);
        builder.AddFloat("Float", 0.0, -1e300, 1e300);
        builder.AddBoolean("Boolean", false);
        builder.AddEnumeration("Enumeration", {"A", "B"}, "A");
        Sim::SimCameraPtr built = builder.Build();
        built->Open();
        return built;
    }();
    return camera;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    static const char* const kFeatures[] = {"Text", "Integer", "Float", "Boolean", "Enumeration"};
    const char* name = kFeatures[data[0] % 5];
    const std::string value(reinterpret_cast<const char*>(data + 1), size - 1);
    Sim::SimCameraPtr camera = FuzzCamera();
    // The camera's own change takes any text the type can hold.
    camera->ChangeFromCamera(name, value);
    FeaturePtr feature;
    if (camera->GetFeatureByName(name, feature) != PkoErrorSuccess)
        return 0;
    static PluginFeatureObserver observer;
    observer.FeatureChanged(feature);
    return 0;
}
