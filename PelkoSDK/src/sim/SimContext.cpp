#include "SimContext.h"

#include "SimState.h"

namespace ZMT::PkoAPI::Sim {

SimContext::SimContext(const SimState& state, const EvalScope& scope) : m_State(state), m_Scope(scope) {}

std::string SimContext::Text(const std::string& feature) const
{
    const int index = m_State.IndexOf(feature);
    return index < 0 ? std::string() : m_State.TextIn(index, m_Scope);
}

std::string SimContext::TextAt(const std::string& feature, const std::string& selectorEntry) const
{
    const int index = m_State.IndexOf(feature);
    return index < 0 ? std::string() : m_State.TextAtEntry(index, selectorEntry, m_Scope);
}

std::string SimContext::SelectorEntry(const std::string& feature) const
{
    const int index = m_State.IndexOf(feature);
    return index < 0 ? std::string() : m_State.SelectorEntryIn(index, m_Scope);
}

bool SimContext::IsAcquiring() const
{
    return m_State.IsAcquiring();
}

bool SimContext::Level(const std::string& lineOrSignal) const
{
    return m_State.Level(lineOrSignal);
}

}  // namespace ZMT::PkoAPI::Sim
