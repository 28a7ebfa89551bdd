#include "MonitorSelectorTrip.h"

#include "FeatureManager.h"

MonitorSelectorTrip::MonitorSelectorTrip(FeatureManager* manager, const QString& selector)
    : m_Manager(manager), m_Selector(selector)
{
    m_Saved = m_Manager->GetStringValue(m_Selector);
    m_Current = m_Saved;
}

MonitorSelectorTrip::~MonitorSelectorTrip()
{
    if (m_Current != m_Saved && !m_Saved.isEmpty())
        m_Manager->SetStringValue(m_Selector, m_Saved);
}

bool MonitorSelectorTrip::Select(const QString& entry)
{
    if (entry == m_Current)
        return true;
    m_Manager->SetStringValue(m_Selector, entry);
    m_Current = m_Manager->GetStringValue(m_Selector);
    return m_Current == entry;
}
