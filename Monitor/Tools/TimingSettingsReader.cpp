#include "TimingSettingsReader.h"

#include "FeatureManager.h"
#include "IoLines.h"
#include "SelectorRoundTrip.h"

TimingSettingsReader::TimingSettingsReader(FeatureManager& manager) : m_Manager(manager) {}

TimingSettings TimingSettingsReader::Read() const
{
    TimingSettings settings;

    // The first frame trigger that is on decides, as on the camera.
    const QStringList entries = m_Manager.GetAvailableValues("TriggerSelector");
    SelectorRoundTrip trigger(m_Manager, "TriggerSelector");
    for (const QString entry : {"FrameStart", "ExposureStart", "ExposureActive"}) {
        if (!entries.contains(entry) || !trigger.Select(entry))
            continue;
        if (m_Manager.GetStringValue("TriggerMode") != "On")
            continue;
        settings.triggerOn = true;
        settings.triggerSelector = entry;
        settings.triggerSource = m_Manager.GetStringValue("TriggerSource");
        settings.triggerActivation = m_Manager.GetStringValue("TriggerActivation");
        if (m_Manager.IsAvailable("TriggerDelay"))
            settings.triggerDelayUs = qMax(0.0, m_Manager.GetValue("TriggerDelay"));
        break;
    }
    trigger.Restore();

    settings.exposureMode = m_Manager.GetStringValue("ExposureMode");
    settings.exposureAuto = m_Manager.GetStringValue("ExposureAuto");
    settings.exposureUs = m_Manager.GetValue("ExposureTime", "ExposureTimeAbs");
    if (m_Manager.IsAvailable("SensorReadoutTime"))
        settings.readoutUs = m_Manager.GetValue("SensorReadoutTime");

    const IoLines lines(m_Manager);
    for (const QString& line : lines.Outputs()) {
        TimingSettings::Output output;
        output.line = line;
        lines.ReadSource(line, output.source);
        lines.ReadInverted(line, output.inverted);
        if (IoLines::IsUserSource(output.source))
            lines.ReadUserValue(line, output.source, output.userValue);
        settings.outputs << output;
    }
    return settings;
}

QStringList TimingSettingsReader::WatchedFeatures() const
{
    static const QStringList candidates = {
        "TriggerSelector", "TriggerMode",     "TriggerSource",   "TriggerActivation", "TriggerDelay",
        "ExposureMode",    "ExposureAuto",    "ExposureTime",    "ExposureTimeAbs",   "SensorReadoutTime",
        "LineSelector",    "LineMode",        "LineSource",      "LineInverter",      "UserOutputSelector",
        "UserOutputValue", "SyncOutSelector", "SyncOutSource",   "SyncOutPolarity",   "SyncOutLevels",
        "LineOutSelector", "LineOutSource",   "LineOutPolarity", "LineOutLevels"};
    QStringList watched;
    for (const QString& name : candidates) {
        if (m_Manager.IsAvailable(name))
            watched << name;
    }
    return watched;
}
