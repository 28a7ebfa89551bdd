#include "SelectorRoundTrip.h"

#include "FeatureManager.h"

SelectorRoundTrip::SelectorRoundTrip(FeatureManager& manager, const QString& selector)
    : m_Manager(manager), m_Selector(selector), m_Kept(manager.GetStringValue(selector))
{}

SelectorRoundTrip::~SelectorRoundTrip()
{
    Restore();
}

bool SelectorRoundTrip::Select(const QString& entry)
{
    if (m_Kept.isEmpty())
        return false;
    if (m_Manager.GetStringValue(m_Selector) == entry)
        return true;
    m_Moved = true;
    m_Manager.SetStringValue(m_Selector, entry);
    return m_Manager.GetStringValue(m_Selector) == entry;
}

bool SelectorRoundTrip::Restore()
{
    if (!m_Moved)
        return true;
    if (m_Manager.GetStringValue(m_Selector) != m_Kept)
        m_Manager.SetStringValue(m_Selector, m_Kept);
    const bool restored = m_Manager.GetStringValue(m_Selector) == m_Kept;
    m_Moved = !restored;
    return restored;
}
