#ifndef PKOAPI_SRC_MODELPARTS_H
#define PKOAPI_SRC_MODELPARTS_H

// Feature groups that every simulated model has in one form or another.

#include <PkoAPI/Sim/CameraBuilder.h>

#include <string>
#include <vector>

namespace ZMT::PkoAPI::Sim {

struct ModelInfo {
    std::string modelName;
    std::string serialNumber;
    std::string firmwareVersion;
    long long sensorWidth;   // a multiple of 8
    long long sensorHeight;  // even
    std::vector<std::string> pixelFormats;
    double maxFrameRate;
    double readoutUs;  // the sensor's readout after each exposure
};

// "DeviceVendorName", "DeviceModelName", "DeviceSerialNumber",
// "DeviceFirmwareVersion", "DeviceUserID", "DeviceTemperature".
void AddDeviceControl(CameraBuilder& builder, const ModelInfo& info);
// "SensorWidth", "SensorHeight", "Width", "Height", "OffsetX", "OffsetY",
// "PixelFormat", "ReverseX", "ReverseY".
void AddImageFormatControl(CameraBuilder& builder, const ModelInfo& info);
// "AcquisitionMode", "AcquisitionStart", "AcquisitionStop",
// "AcquisitionFrameCount", "AcquisitionFrameRate", "SensorReadoutTime",
// "AcquisitionStatusSelector" with "AcquisitionStatus".
// Starting and stopping also notify alsoNotify (features that show whether
// the camera acquires).
void AddAcquisitionControl(CameraBuilder& builder, const ModelInfo& info,
                           const std::vector<std::string>& alsoNotify = std::vector<std::string>());
// "TriggerSelector" selecting "TriggerMode", "TriggerSource" and
// "TriggerActivation", then "TriggerSoftware" and "TriggerDelay". Returns the
// selector, for rules on its entries.
FeatureBuilder AddTriggerControl(CameraBuilder& builder, const std::vector<std::string>& selectors,
                                 const std::vector<std::string>& sources, const std::string& source,
                                 const std::vector<std::string>& activations);
// "ExposureMode" ("Timed", "TriggerWidth"; only when withExposureMode),
// "ExposureTime" in microseconds, "ExposureAuto" with autoEntries. Returns
// "ExposureMode" when made, else "ExposureAuto", for further rules.
FeatureBuilder AddExposureControl(CameraBuilder& builder, bool withExposureMode,
                                  const std::vector<std::string>& autoEntries);
// "Gain", "GainAuto", "BlackLevel", "Gamma".
void AddAnalogControl(CameraBuilder& builder);
// The "Line*" outputs: four lines, Line0 a fixed input, Line1 a fixed output,
// Line2 and Line3 switchable; "UserOutputSelector"/"UserOutputValue"; with
// routing, "LineRouting" (Off/Trigger) on input lines.
void AddLineIO(CameraBuilder& builder, bool withRouting);
// "TimerSelector" selecting "TimerDuration", "TimerDelay", "TimerTriggerSource".
void AddTimerControl(CameraBuilder& builder);
// "CounterSelector" (Counter0..Counter2) selecting "CounterEventSource" and
// "CounterValue", and "CounterReset". The counters start counting frame
// triggers, missed frame triggers and frames.
void AddCounterControl(CameraBuilder& builder);
// Levels of lines as a bit mask, bit i for lines[i]: "LineStatusAll", and the
// output levels of the bit-mask generations ("SyncOutLevels",
// "LineOutLevels", whose "GPO" outputs take the written bits).
ValueRule LevelMask(const std::vector<std::string>& lines);

}  // namespace ZMT::PkoAPI::Sim

#endif
