// SIM-NO-TRIGGER: a plain streaming camera (SVGA, USB class): it free-runs
// at its frame rate and has no trigger and no digital I/O at all.

#include "ModelParts.h"
#include "Models.h"

namespace ZMT::PkoAPI::Sim {

SimCameraPtr BuildNoTriggerModel()
{
    const ModelInfo info{"PK-NT0800c", "SIM0800N0001", "1.0.7", 800, 600, {"RGB8", "BayerGR8", "Mono8"}, 120.0, 8000.0};
    CameraBuilder builder("SIM-NO-TRIGGER", info.modelName);
    AddDeviceControl(builder, info);
    AddImageFormatControl(builder, info);
    AddAcquisitionControl(builder, info);
    AddExposureControl(builder, false, {"Off", "Once", "Continuous"});
    AddAnalogControl(builder);
    builder.AddInteger("BinningHorizontal", 1, 1, 4)
        .DisplayName("Binning Horizontal")
        .Category("/ImageFormatControl")
        .LockedWhileAcquiring();
    builder.AddInteger("BinningVertical", 1, 1, 4)
        .DisplayName("Binning Vertical")
        .Category("/ImageFormatControl")
        .LockedWhileAcquiring();
    builder.AddEnumeration("TestPattern", {"Off", "GreyHorizontalRamp", "ColorBars"}, "Off")
        .DisplayName("Test Pattern")
        .Category("/ImageFormatControl");
    builder.AddEnumeration("BalanceWhiteAuto", {"Off", "Once", "Continuous"}, "Off")
        .DisplayName("Balance White Auto")
        .Category("/AnalogControl");
    return builder.Build();
}

}  // namespace ZMT::PkoAPI::Sim
