// Two cameras with standard "Line*" I/O: four lines (Line0 input, Line1
// output, Line2/Line3 bidirectional), three user outputs and a timer.
//
// SIM-LINE-ROUTING: a 1.3 MP mono camera whose input lines can be routed to
// the frame trigger ("LineRouting", trigger source "InputLines"). In
// "TriggerWidth" exposure the pulse width is the exposure, and the only
// trigger to configure is "ExposureActive".
//
// SIM-LINE-SFNC: a 2.3 MP colour camera that names everything the standard
// way: triggers come from a line or from software, no routing.

#include "ModelParts.h"
#include "Models.h"

namespace ZMT::PkoAPI::Sim {

namespace {

bool TriggerWidth(const Context& c)
{
    return c.Text("ExposureMode") == "TriggerWidth";
}

bool NotTriggerWidth(const Context& c)
{
    return !TriggerWidth(c);
}

}  // namespace

SimCameraPtr BuildLineRoutingModel()
{
    const ModelInfo info{"PK-LR1300m", "SIM1300R0001", "2.4.1", 1280, 1024, {"Mono8", "Mono12", "Mono12Packed"},
                         60.0,         2000.0};
    CameraBuilder builder("SIM-LINE-ROUTING", info.modelName);
    AddDeviceControl(builder, info);
    AddImageFormatControl(builder, info);
    AddAcquisitionControl(builder, info);
    AddTriggerControl(builder, {"FrameStart", "AcquisitionStart", "ExposureStart", "ExposureActive"},
                      {"InputLines", "Line0", "Line1", "Line2", "Line3", "Software"}, "Line0",
                      {"RisingEdge", "FallingEdge", "AnyEdge", "HighLevel", "LowLevel"})
        .EntryAvailableWhen("FrameStart", NotTriggerWidth)
        .EntryAvailableWhen("AcquisitionStart", NotTriggerWidth)
        .EntryAvailableWhen("ExposureStart", NotTriggerWidth)
        .EntryAvailableWhen("ExposureActive", TriggerWidth);
    AddExposureControl(builder, true, {"Off", "Once", "Continuous"}).Notifies({"TriggerSelector"});
    AddAnalogControl(builder);
    AddLineIO(builder, true);
    AddTimerControl(builder);
    AddCounterControl(builder);
    return builder.Build();
}

SimCameraPtr BuildLineSfncModel()
{
    const ModelInfo info{"PK-SF2300c", "SIM2300S0001", "1.9.0", 1920, 1200, {"BayerRG8", "BayerRG12", "RGB8", "Mono8"},
                         160.0,        3000.0};
    CameraBuilder builder("SIM-LINE-SFNC", info.modelName);
    AddDeviceControl(builder, info);
    AddImageFormatControl(builder, info);
    AddAcquisitionControl(builder, info);
    AddTriggerControl(builder, {"FrameStart", "AcquisitionStart"}, {"Line0", "Line1", "Line2", "Line3", "Software"},
                      "Line0", {"RisingEdge", "FallingEdge", "AnyEdge", "LevelHigh", "LevelLow"});
    AddExposureControl(builder, true, {"Off", "Once", "Continuous"});
    AddAnalogControl(builder);
    AddLineIO(builder, false);
    AddTimerControl(builder);
    AddCounterControl(builder);
    return builder.Build();
}

}  // namespace ZMT::PkoAPI::Sim
