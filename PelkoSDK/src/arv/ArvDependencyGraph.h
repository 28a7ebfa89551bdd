#ifndef PKOAPI_SRC_ARV_ARVDEPENDENCYGRAPH_H
#define PKOAPI_SRC_ARV_ARVDEPENDENCYGRAPH_H

#include "ArvNodeInfo.h"

#include <vector>

namespace ZMT::PkoAPI::Arv {

// Which features a write can change. Aravis has no change callbacks, so the
// backend works it out once at open from the node map: a feature depends on
// every node it reaches through its pointer properties (value, range,
// availability, lock, index, formula variables, its entries' properties),
// and a selector's pSelected features depend on it. A write of feature B
// changes B's nodes along its pValue chain; every feature that reaches one
// of them is affected.
class ArvDependencyGraph {
public:
    // Calls Aravis: the caller holds the device lock.
    explicit ArvDependencyGraph(const std::vector<ArvNodeInfo>& features);

    // Indices of the features to notify after a write of feature index: the
    // feature itself first, then the others in feature order. Empty for an
    // index out of range.
    const std::vector<int>& Affected(int index) const;

    // node and every node it reaches through its pointer properties, as
    // above. Calls Aravis: the caller holds the device lock.
    static std::vector<ArvGcNode*> Reads(ArvGcNode* node);

private:
    std::vector<std::vector<int>> m_Affected;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
