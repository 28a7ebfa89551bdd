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
};

// "DeviceVendorName", "DeviceModelName", "DeviceSerialNumber",
// "DeviceFirmwareVersion", "DeviceUserID", "DeviceTemperature".
void AddDeviceControl(CameraBuilder& builder, const ModelInfo& info);
// "SensorWidth", "SensorHeight", "Width", "Height", "OffsetX", "OffsetY",
// "PixelFormat", "ReverseX", "ReverseY".
void AddImageFormatControl(CameraBuilder& builder, const ModelInfo& info);
// "AcquisitionMode", "AcquisitionStart", "AcquisitionStop",
// "AcquisitionFrameCount", "AcquisitionFrameRate", "AcquisitionStatus".
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
// Output levels of the bit-mask generations ("SyncOutLevels",
// "LineOutLevels"): bit i belongs to outputs[i]. An output whose source is
// "GPO" shows its stored bit, one following "Acquiring" the acquisition
// state, one following inputs[k] bit k of inputLevels, any other 0 (idle);
// "Invert" polarity inverts the bit.
ValueRule OutputLevels(const std::vector<std::string>& outputs, const std::string& sourceFeature,
                       const std::string& polarityFeature, const std::string& levelsFeature,
                       const std::vector<std::string>& inputs, const std::string& inputLevelsFeature);

}  // namespace ZMT::PkoAPI::Sim

#endif
