#ifndef PKOAPI_SRC_SIMCONTEXT_H
#define PKOAPI_SRC_SIMCONTEXT_H

#include "EvalScope.h"

#include <PkoAPI/Sim/SimTypes.h>

#include <string>

namespace ZMT::PkoAPI::Sim {

class SimState;

// The view of a simulated camera that its rules see. It reads the state
// directly: rules run while the camera is locked, so reading must not lock.
class SimContext final : public Context {
public:
    SimContext(const SimState& state, const EvalScope& scope);

    std::string Text(const std::string& feature) const override;
    std::string TextAt(const std::string& feature, const std::string& selectorEntry) const override;
    std::string SelectorEntry(const std::string& feature) const override;
    bool IsAcquiring() const override;
    bool Level(const std::string& lineOrSignal) const override;

private:
    const SimState& m_State;
    const EvalScope& m_Scope;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
