#include "FeatureDecl.h"

#include <PkoAPI/Sim/CameraBuilder.h>

#include <utility>

namespace ZMT::PkoAPI::Sim {

FeatureBuilder::FeatureBuilder(FeatureDecl* decl) : m_Decl(decl) {}

FeatureBuilder& FeatureBuilder::DisplayName(const std::string& displayName)
{
    m_Decl->displayName = displayName;
    return *this;
}

FeatureBuilder& FeatureBuilder::Category(const std::string& category)
{
    m_Decl->category = category;
    return *this;
}

FeatureBuilder& FeatureBuilder::ReadOnly()
{
    m_Decl->readOnly = true;
    return *this;
}

FeatureBuilder& FeatureBuilder::WritableWhen(Predicate predicate)
{
    if (!predicate && m_Decl->error.empty())
        m_Decl->error = "empty writability rule";
    m_Decl->writableWhen = std::move(predicate);
    return *this;
}

FeatureBuilder& FeatureBuilder::LockedWhileAcquiring()
{
    m_Decl->lockedWhileAcquiring = true;
    return *this;
}

FeatureBuilder& FeatureBuilder::EntryAvailableWhen(const std::string& entry, Predicate predicate)
{
    if (!predicate && m_Decl->error.empty())
        m_Decl->error = "empty availability rule for \"" + entry + "\"";
    m_Decl->entryRules.emplace_back(entry, std::move(predicate));
    return *this;
}

FeatureBuilder& FeatureBuilder::Selects(const std::vector<std::string>& features)
{
    m_Decl->selects.insert(m_Decl->selects.end(), features.begin(), features.end());
    return *this;
}

FeatureBuilder& FeatureBuilder::ValueAt(const std::string& selectorEntry, const std::string& valueText)
{
    m_Decl->valuesAt.emplace_back(selectorEntry, valueText);
    return *this;
}

FeatureBuilder& FeatureBuilder::ComputedBy(ValueRule rule)
{
    if (!rule && m_Decl->error.empty())
        m_Decl->error = "empty value rule";
    m_Decl->computed = std::move(rule);
    return *this;
}

FeatureBuilder& FeatureBuilder::Notifies(const std::vector<std::string>& features)
{
    m_Decl->notifies.insert(m_Decl->notifies.end(), features.begin(), features.end());
    return *this;
}

}  // namespace ZMT::PkoAPI::Sim
