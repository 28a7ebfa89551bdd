#include "ModelParts.h"

#include "ValueText.h"

#include <optional>

namespace ZMT::PkoAPI::Sim {

namespace {

const char* const kDevice = "/DeviceControl";
const char* const kImageFormat = "/ImageFormatControl";
const char* const kAcquisition = "/AcquisitionControl";
const char* const kAnalog = "/AnalogControl";
const char* const kDigitalIO = "/DigitalIOControl";
const char* const kTimer = "/CounterAndTimerControl";

bool IsOutputLine(const Context& c)
{
    return c.Text("LineMode") == "Output";
}

}  // namespace

// Every float of the models has an increment: clients snap values onto it
// before writing, and a snapped value is what the camera accepts.
void AddDeviceControl(CameraBuilder& builder, const ModelInfo& info)
{
    builder.AddString("DeviceVendorName", "Pelko Simulation").DisplayName("Vendor Name").Category(kDevice).ReadOnly();
    builder.AddString("DeviceModelName", info.modelName).DisplayName("Model Name").Category(kDevice).ReadOnly();
    builder.AddString("DeviceSerialNumber", info.serialNumber)
        .DisplayName("Serial Number")
        .Category(kDevice)
        .ReadOnly();
    builder.AddString("DeviceFirmwareVersion", info.firmwareVersion)
        .DisplayName("Firmware Version")
        .Category(kDevice)
        .ReadOnly();
    builder.AddString("DeviceUserID", "").DisplayName("User ID").Category(kDevice);
    builder.AddFloat("DeviceTemperature", 41.5, -40.0, 125.0, 0.1)
        .DisplayName("Device Temperature")
        .Category(kDevice)
        .ReadOnly();
}

void AddImageFormatControl(CameraBuilder& builder, const ModelInfo& info)
{
    const long long width = info.sensorWidth;
    const long long height = info.sensorHeight;
    builder.AddInteger("SensorWidth", width, width, width)
        .DisplayName("Sensor Width")
        .Category(kImageFormat)
        .ReadOnly();
    builder.AddInteger("SensorHeight", height, height, height)
        .DisplayName("Sensor Height")
        .Category(kImageFormat)
        .ReadOnly();
    builder.AddInteger("Width", width, 16, width, 8).Category(kImageFormat).LockedWhileAcquiring();
    builder.AddInteger("Height", height, 8, height, 2).Category(kImageFormat).LockedWhileAcquiring();
    builder.AddInteger("OffsetX", 0, 0, width - 16, 8).DisplayName("Offset X").Category(kImageFormat);
    builder.AddInteger("OffsetY", 0, 0, height - 8, 2).DisplayName("Offset Y").Category(kImageFormat);
    builder.AddEnumeration("PixelFormat", info.pixelFormats, info.pixelFormats.front())
        .DisplayName("Pixel Format")
        .Category(kImageFormat)
        .LockedWhileAcquiring();
    builder.AddBoolean("ReverseX", false).DisplayName("Reverse X").Category(kImageFormat);
    builder.AddBoolean("ReverseY", false).DisplayName("Reverse Y").Category(kImageFormat);
}

void AddAcquisitionControl(CameraBuilder& builder, const ModelInfo& info, const std::vector<std::string>& alsoNotify)
{
    std::vector<std::string> notified{"AcquisitionStatus"};
    notified.insert(notified.end(), alsoNotify.begin(), alsoNotify.end());
    builder.AddEnumeration("AcquisitionMode", {"Continuous", "SingleFrame", "MultiFrame"}, "Continuous")
        .DisplayName("Acquisition Mode")
        .Category(kAcquisition)
        .LockedWhileAcquiring();
    builder.AddCommand("AcquisitionStart").DisplayName("Acquisition Start").Category(kAcquisition).Notifies(notified);
    builder.AddCommand("AcquisitionStop").DisplayName("Acquisition Stop").Category(kAcquisition).Notifies(notified);
    builder.AddInteger("AcquisitionFrameCount", 1, 1, 65535)
        .DisplayName("Acquisition Frame Count")
        .Category(kAcquisition)
        .LockedWhileAcquiring();
    builder.AddFloat("AcquisitionFrameRate", 30.0, 1.0, info.maxFrameRate, 0.01)
        .DisplayName("Acquisition Frame Rate")
        .Category(kAcquisition);
    builder.AddFloat("SensorReadoutTime", info.readoutUs, info.readoutUs, info.readoutUs, 1.0)
        .DisplayName("Sensor Readout Time")
        .Category(kAcquisition)
        .ReadOnly();
    builder
        .AddEnumeration("AcquisitionStatusSelector",
                        {"AcquisitionActive", "AcquisitionTriggerWait", "FrameTriggerWait", "ExposureActive"},
                        "AcquisitionActive")
        .DisplayName("Acquisition Status Selector")
        .Category(kAcquisition)
        .Selects({"AcquisitionStatus"});
    builder.AddBoolean("AcquisitionStatus", false)
        .DisplayName("Acquisition Status")
        .Category(kAcquisition)
        .ReadOnly()
        .ComputedBy([](const Context& c) {
            return std::optional<std::string>(FormatBoolean(c.Level(c.SelectorEntry("AcquisitionStatus"))));
        });
}

FeatureBuilder AddTriggerControl(CameraBuilder& builder, const std::vector<std::string>& selectors,
                                 const std::vector<std::string>& sources, const std::string& source,
                                 const std::vector<std::string>& activations)
{
    FeatureBuilder selector = builder.AddEnumeration("TriggerSelector", selectors, selectors.front());
    selector.DisplayName("Trigger Selector")
        .Category(kAcquisition)
        .Selects({"TriggerMode", "TriggerSource", "TriggerActivation"});
    builder.AddEnumeration("TriggerMode", {"Off", "On"}, "Off")
        .DisplayName("Trigger Mode")
        .Category(kAcquisition)
        .LockedWhileAcquiring();
    builder.AddEnumeration("TriggerSource", sources, source)
        .DisplayName("Trigger Source")
        .Category(kAcquisition)
        .LockedWhileAcquiring();
    builder.AddEnumeration("TriggerActivation", activations, activations.front())
        .DisplayName("Trigger Activation")
        .Category(kAcquisition)
        .LockedWhileAcquiring();
    builder.AddCommand("TriggerSoftware").DisplayName("Trigger Software").Category(kAcquisition);
    builder.AddFloat("TriggerDelay", 0.0, 0.0, 1000000.0, 1.0).DisplayName("Trigger Delay").Category(kAcquisition);
    return selector;
}

FeatureBuilder AddExposureControl(CameraBuilder& builder, bool withExposureMode,
                                  const std::vector<std::string>& autoEntries)
{
    std::optional<FeatureBuilder> mode;
    if (withExposureMode) {
        mode = builder.AddEnumeration("ExposureMode", {"Timed", "TriggerWidth"}, "Timed");
        mode->DisplayName("Exposure Mode").Category(kAcquisition).LockedWhileAcquiring().Notifies({"ExposureTime"});
    }
    // The time is set by hand only while neither the automatic nor the
    // trigger pulse decides it.
    builder.AddFloat("ExposureTime", 10000.0, 10.0, 1000000.0, 1.0)
        .DisplayName("Exposure Time")
        .Category(kAcquisition)
        .WritableWhen([withExposureMode](const Context& c) {
            return c.Text("ExposureAuto") == "Off" && (!withExposureMode || c.Text("ExposureMode") == "Timed");
        });
    FeatureBuilder automatic = builder.AddEnumeration("ExposureAuto", autoEntries, "Off");
    automatic.DisplayName("Exposure Auto").Category(kAcquisition).Notifies({"ExposureTime"});
    return mode ? *mode : automatic;
}

void AddAnalogControl(CameraBuilder& builder)
{
    builder.AddFloat("Gain", 0.0, 0.0, 24.0, 0.1).Category(kAnalog).WritableWhen([](const Context& c) {
        return c.Text("GainAuto") == "Off";
    });
    builder.AddEnumeration("GainAuto", {"Off", "Once", "Continuous"}, "Off")
        .DisplayName("Gain Auto")
        .Category(kAnalog)
        .Notifies({"Gain"});
    builder.AddFloat("BlackLevel", 0.0, 0.0, 31.75, 0.25).DisplayName("Black Level").Category(kAnalog);
    builder.AddFloat("Gamma", 1.0, 0.25, 4.0, 0.05).Category(kAnalog);
}

void AddLineIO(CameraBuilder& builder, bool withRouting)
{
    std::vector<std::string> perLine{"LineMode", "LineSource", "LineInverter", "LineStatus"};
    std::vector<std::string> modeDependants{"LineSource", "LineStatus"};
    if (withRouting) {
        perLine.push_back("LineRouting");
        modeDependants.push_back("LineRouting");
    }
    builder.AddEnumeration("LineSelector", {"Line0", "Line1", "Line2", "Line3"}, "Line0")
        .DisplayName("Line Selector")
        .Category(kDigitalIO)
        .Selects(perLine);
    // Line0 is wired as an input and Line1 as an output; Line2 and Line3 are
    // bidirectional.
    builder.AddEnumeration("LineMode", {"Input", "Output"}, "Input")
        .DisplayName("Line Mode")
        .Category(kDigitalIO)
        .ValueAt("Line1", "Output")
        .ValueAt("Line3", "Output")
        .WritableWhen([](const Context& c) {
            const std::string line = c.SelectorEntry("LineMode");
            return line == "Line2" || line == "Line3";
        })
        .EntryAvailableWhen("Input", [](const Context& c) { return c.SelectorEntry("LineMode") != "Line1"; })
        .EntryAvailableWhen("Output", [](const Context& c) { return c.SelectorEntry("LineMode") != "Line0"; })
        .Notifies(modeDependants);
    builder
        .AddEnumeration("LineSource",
                        {"Off", "ExposureActive", "FrameTriggerWait", "Timer0Active", "UserOutput0", "UserOutput1",
                         "UserOutput2", "Direct"},
                        "Off")
        .DisplayName("Line Source")
        .Category(kDigitalIO)
        .ValueAt("Line1", "ExposureActive")
        .WritableWhen(IsOutputLine)
        .Notifies({"LineStatus"});
    builder.AddBoolean("LineInverter", false)
        .DisplayName("Line Inverter")
        .Category(kDigitalIO)
        .Notifies({"LineStatus"});
    // The level on the connector: an output shows what drives it (its own
    // stored level only when driven directly), an input what was applied to
    // it (the stored value); the inverter inverts either. The camera's
    // signals work that out.
    builder.AddBoolean("LineStatus", false)
        .DisplayName("Line Status")
        .Category(kDigitalIO)
        .WritableWhen([](const Context& c) { return IsOutputLine(c) && c.Text("LineSource") == "Direct"; })
        .ComputedBy([](const Context& c) {
            return std::optional<std::string>(FormatBoolean(c.Level(c.SelectorEntry("LineStatus"))));
        });
    builder.AddInteger("LineStatusAll", 0, 0, 15)
        .DisplayName("Line Status All")
        .Category(kDigitalIO)
        .ReadOnly()
        .ComputedBy(LevelMask({"Line0", "Line1", "Line2", "Line3"}));
    if (withRouting) {
        builder.AddEnumeration("LineRouting", {"Off", "Trigger"}, "Off")
            .DisplayName("Line Routing")
            .Category(kDigitalIO)
            .WritableWhen([](const Context& c) { return c.Text("LineMode") == "Input"; });
    }
    builder.AddEnumeration("UserOutputSelector", {"UserOutput0", "UserOutput1", "UserOutput2"}, "UserOutput0")
        .DisplayName("User Output Selector")
        .Category(kDigitalIO)
        .Selects({"UserOutputValue"});
    builder.AddBoolean("UserOutputValue", false)
        .DisplayName("User Output Value")
        .Category(kDigitalIO)
        .Notifies({"LineStatus"});
}

void AddTimerControl(CameraBuilder& builder)
{
    builder.AddEnumeration("TimerSelector", {"Timer0"}, "Timer0")
        .DisplayName("Timer Selector")
        .Category(kTimer)
        .Selects({"TimerDuration", "TimerDelay", "TimerTriggerSource"});
    builder.AddFloat("TimerDuration", 1000.0, 0.0, 10000000.0, 1.0).DisplayName("Timer Duration").Category(kTimer);
    builder.AddFloat("TimerDelay", 0.0, 0.0, 10000000.0, 1.0).DisplayName("Timer Delay").Category(kTimer);
    builder.AddEnumeration("TimerTriggerSource", {"Off", "ExposureStart", "ExposureEnd", "Line0"}, "Off")
        .DisplayName("Timer Trigger Source")
        .Category(kTimer);
}

void AddCounterControl(CameraBuilder& builder)
{
    builder.AddEnumeration("CounterSelector", {"Counter0", "Counter1", "Counter2"}, "Counter0")
        .DisplayName("Counter Selector")
        .Category(kTimer)
        .Selects({"CounterEventSource", "CounterValue"});
    builder
        .AddEnumeration("CounterEventSource",
                        {"Off", "AcquisitionTrigger", "FrameTrigger", "FrameTriggerMissed", "ExposureStart",
                         "ExposureEnd", "FrameEnd"},
                        "FrameTrigger")
        .DisplayName("Counter Event Source")
        .Category(kTimer)
        .ValueAt("Counter1", "FrameTriggerMissed")
        .ValueAt("Counter2", "FrameEnd");
    builder.AddInteger("CounterValue", 0, 0, 0x7fffffffffffffffLL)
        .DisplayName("Counter Value")
        .Category(kTimer)
        .ReadOnly();
    builder.AddCommand("CounterReset").DisplayName("Counter Reset").Category(kTimer).Notifies({"CounterValue"});
}

ValueRule LevelMask(const std::vector<std::string>& lines)
{
    return [=](const Context& c) -> std::optional<std::string> {
        long long levels = 0;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (c.Level(lines[i]))
                levels |= 1LL << i;
        }
        return FormatInteger(levels);
    };
}

}  // namespace ZMT::PkoAPI::Sim
