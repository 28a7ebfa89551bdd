#include "CameraCounters.h"

#include "FeatureManager.h"
#include "MonitorSelectorTrip.h"

CameraCounters::CameraCounters(FeatureManager* manager) : m_Manager(manager) {}

bool CameraCounters::Probe()
{
    m_Entries.clear();
    m_Values.clear();
    if (!m_Manager->IsAvailable("CounterSelector") || !m_Manager->IsAvailable("CounterValue"))
        return false;
    const QStringList entries = m_Manager->GetAvailableValues("CounterSelector");
    MonitorSelectorTrip trip(m_Manager, "CounterSelector");
    for (const QString& entry : entries) {
        if (!trip.Select(entry))
            continue;
        const QString source = m_Manager->GetStringValue("CounterEventSource");
        int kind = -1;
        if (source == "FrameEnd")
            kind = Frames;
        else if (source == "FrameTrigger")
            kind = FrameTriggers;
        else if (source == "FrameTriggerMissed")
            kind = MissedTriggers;
        // The first counter of a kind is the one shown.
        if (kind >= 0 && !m_Entries.contains(kind))
            m_Entries.insert(kind, entry);
    }
    return !m_Entries.isEmpty();
}

bool CameraCounters::CanReset()
{
    return !m_Entries.isEmpty() && m_Manager->IsAvailable("CounterReset") && m_Manager->IsWritable("CounterReset");
}

bool CameraCounters::Read()
{
    if (m_Entries.isEmpty())
        return true;
    bool ok = true;
    MonitorSelectorTrip trip(m_Manager, "CounterSelector");
    for (auto it = m_Entries.constBegin(); it != m_Entries.constEnd(); ++it) {
        if (!trip.Select(it.value())) {
            ok = false;
            continue;
        }
        const double value = m_Manager->GetValue("CounterValue");
        if (value >= 0.0)
            m_Values.insert(it.key(), static_cast<long long>(value));
        else
            ok = false;
    }
    return ok;
}

bool CameraCounters::Reset()
{
    bool ok = true;
    MonitorSelectorTrip trip(m_Manager, "CounterSelector");
    for (auto it = m_Entries.constBegin(); it != m_Entries.constEnd(); ++it) {
        if (!trip.Select(it.value()) || m_Manager->RunCommand("CounterReset"))
            ok = false;
    }
    return ok;
}
