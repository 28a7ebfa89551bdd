// SIM-LINEOUT: a 2 MP camera of the "LineOut" generation. Four outputs
// LineOut1..LineOut4 with source and polarity, their levels as one bit mask
// ("LineOutLevels"; only "GPO" outputs take the written bits), two inputs
// LineIn1/LineIn2 shown in "LineInLevels". Triggers come from the two input
// lines or from software.

#include "ModelParts.h"
#include "Models.h"

namespace ZMT::PkoAPI::Sim {

SimCameraPtr BuildLineOutModel()
{
    const std::vector<std::string> outputs{"LineOut1", "LineOut2", "LineOut3", "LineOut4"};
    const ModelInfo info{"PK-LO1600m", "SIM1600L0001", "3.1.2", 1600, 1200, {"Mono8", "Mono10", "Mono12"},
                         30.0,         4000.0};
    CameraBuilder builder("SIM-LINEOUT", info.modelName);
    AddDeviceControl(builder, info);
    AddImageFormatControl(builder, info);
    AddAcquisitionControl(builder, info, {"LineOutLevels"});
    AddTriggerControl(builder, {"FrameStart", "AcquisitionStart"}, {"Line1", "Line2", "Software"}, "Line1",
                      {"RisingEdge", "FallingEdge", "AnyEdge", "LevelHigh", "LevelLow"});
    AddExposureControl(builder, true, {"Off", "Once", "Continuous"});
    AddAnalogControl(builder);

    const char* const io = "/DigitalIOControl";
    builder.AddInteger("LineInLevels", 0, 0, 3)
        .DisplayName("Line In Levels")
        .Category(io)
        .ReadOnly()
        .Notifies({"LineOutLevels"});
    builder.AddEnumeration("LineOutSelector", outputs, "LineOut1")
        .DisplayName("Line Out Selector")
        .Category(io)
        .Selects({"LineOutSource", "LineOutPolarity"});
    builder
        .AddEnumeration("LineOutSource",
                        {"GPO", "AcquisitionTriggerReady", "FrameTriggerReady", "Exposing", "FrameReadout", "Acquiring",
                         "LineIn1", "LineIn2"},
                        "Exposing")
        .DisplayName("Line Out Source")
        .Category(io)
        .ValueAt("LineOut2", "FrameTriggerReady")
        .ValueAt("LineOut3", "GPO")
        .ValueAt("LineOut4", "GPO")
        .Notifies({"LineOutLevels"});
    builder.AddEnumeration("LineOutPolarity", {"Normal", "Invert"}, "Normal")
        .DisplayName("Line Out Polarity")
        .Category(io)
        .Notifies({"LineOutLevels"});
    builder.AddInteger("LineOutLevels", 0, 0, 15)
        .DisplayName("Line Out Levels")
        .Category(io)
        .ComputedBy(LevelMask(outputs));
    AddCounterControl(builder);
    return builder.Build();
}

}  // namespace ZMT::PkoAPI::Sim
