#ifndef PKOAPI_SRC_EVALSCOPE_H
#define PKOAPI_SRC_EVALSCOPE_H

#include <utility>
#include <vector>

namespace ZMT::PkoAPI::Sim {

// Where a rule is being evaluated: selector entries pinned for the rule (a
// computed value of "Line2" reads the other features of "Line2", whatever the
// selector says) and the computed features on the way (a rule reading its own
// feature gets the stored value, and cycles end there).
struct EvalScope {
    std::vector<std::pair<int, int>> pinned;  // selector index -> entry index
    std::vector<int> computing;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
