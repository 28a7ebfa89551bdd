// SIM-SYNCOUT: an older VGA camera of the "SyncOut" generation. Four
// opto-isolated outputs SyncOut1..SyncOut4, each with a signal source and a
// polarity, and their levels as one bit mask ("SyncOutLevels"; only outputs
// driven by "GPO" take the written bits). Two inputs, SyncIn1/SyncIn2, show
// in "SyncInLevels". Exposure is automatic or fixed ("ExposureAuto" knows an
// entry "other"); there is no exposure mode.

#include "ModelParts.h"
#include "Models.h"

namespace ZMT::PkoAPI::Sim {

SimCameraPtr BuildSyncOutModel()
{
    const std::vector<std::string> outputs{"SyncOut1", "SyncOut2", "SyncOut3", "SyncOut4"};
    const ModelInfo info{"PK-SO0656m", "SIM0656Y0001", "1.36.0", 656, 492, {"Mono8", "Mono12", "Mono12Packed"},
                         90.0,         5000.0};
    CameraBuilder builder("SIM-SYNCOUT", info.modelName);
    AddDeviceControl(builder, info);
    AddImageFormatControl(builder, info);
    AddAcquisitionControl(builder, info, {"SyncOutLevels"});
    AddTriggerControl(builder, {"FrameStart", "AcquisitionStart"},
                      {"Freerun", "Line1", "Line2", "FixedRate", "Software"}, "Freerun",
                      {"RisingEdge", "FallingEdge", "AnyEdge", "LevelHigh", "LevelLow"});
    AddExposureControl(builder, false, {"Off", "Once", "Continuous", "other"});
    AddAnalogControl(builder);

    const char* const io = "/DigitalIOControl";
    builder.AddInteger("SyncInLevels", 0, 0, 3)
        .DisplayName("Sync In Levels")
        .Category(io)
        .ReadOnly()
        .Notifies({"SyncOutLevels"});
    builder.AddEnumeration("SyncOutSelector", outputs, "SyncOut1")
        .DisplayName("Sync Out Selector")
        .Category(io)
        .Selects({"SyncOutSource", "SyncOutPolarity"});
    builder
        .AddEnumeration("SyncOutSource",
                        {"GPO", "AcquisitionTriggerReady", "FrameTriggerReady", "FrameTrigger", "Exposing",
                         "FrameReadout", "Acquiring", "SyncIn1", "SyncIn2"},
                        "Exposing")
        .DisplayName("Sync Out Source")
        .Category(io)
        .ValueAt("SyncOut2", "Acquiring")
        .ValueAt("SyncOut3", "GPO")
        .ValueAt("SyncOut4", "GPO")
        .Notifies({"SyncOutLevels"});
    builder.AddEnumeration("SyncOutPolarity", {"Normal", "Invert"}, "Normal")
        .DisplayName("Sync Out Polarity")
        .Category(io)
        .Notifies({"SyncOutLevels"});
    builder.AddInteger("SyncOutLevels", 0, 0, 15)
        .DisplayName("Sync Out Levels")
        .Category(io)
        .ComputedBy(LevelMask(outputs));
    AddCounterControl(builder);
    return builder.Build();
}

}  // namespace ZMT::PkoAPI::Sim
