#include "ArvDependencyGraph.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace ZMT::PkoAPI::Arv {

namespace {

using NodeSet = std::unordered_set<ArvGcNode*>;

bool IsPointer(ArvGcPropertyNodeType type)
{
    // pSelected points the other way (the selector is not read by the
    // feature it names) and pFeature only lists a category's members.
    return type != ARV_GC_PROPERTY_NODE_TYPE_P_SELECTED && type != ARV_GC_PROPERTY_NODE_TYPE_P_FEATURE;
}

// Every node reachable from node through pointer properties, recursively.
void CollectReads(ArvGcNode* node, NodeSet& reads)
{
    for (ArvDomNode* child = arv_dom_node_get_first_child(ARV_DOM_NODE(node)); child != nullptr;
         child = arv_dom_node_get_next_sibling(child)) {
        if (ARV_IS_GC_PROPERTY_NODE(child)) {
            auto* property = ARV_GC_PROPERTY_NODE(child);
            if (!IsPointer(arv_gc_property_node_get_node_type(property)))
                continue;
            ArvGcNode* linked = arv_gc_property_node_get_linked_node(property);
            if (linked != nullptr && reads.insert(linked).second)
                CollectReads(linked, reads);
        } else if (ARV_IS_GC_ENUM_ENTRY(child) && ARV_IS_GC_NODE(child)) {
            CollectReads(ARV_GC_NODE(child), reads);
        }
    }
}

// node and the nodes a write of it may pass on to: its pValue chain, and
// for a selector-indexed value every entry's node.
void CollectWrites(ArvGcNode* node, NodeSet& writes)
{
    if (!writes.insert(node).second)
        return;
    for (ArvDomNode* child = arv_dom_node_get_first_child(ARV_DOM_NODE(node)); child != nullptr;
         child = arv_dom_node_get_next_sibling(child)) {
        if (!ARV_IS_GC_PROPERTY_NODE(child))
            continue;
        auto* property = ARV_GC_PROPERTY_NODE(child);
        const ArvGcPropertyNodeType type = arv_gc_property_node_get_node_type(property);
        if (type != ARV_GC_PROPERTY_NODE_TYPE_P_VALUE && type != ARV_GC_PROPERTY_NODE_TYPE_P_VALUE_INDEXED &&
            type != ARV_GC_PROPERTY_NODE_TYPE_P_VALUE_DEFAULT)
            continue;
        if (ArvGcNode* linked = arv_gc_property_node_get_linked_node(property))
            CollectWrites(linked, writes);
    }
}

}  // namespace

ArvDependencyGraph::ArvDependencyGraph(const std::vector<ArvNodeInfo>& features)
{
    const std::size_t count = features.size();
    std::unordered_map<ArvGcNode*, int> indexOf;
    for (std::size_t i = 0; i < count; ++i)
        indexOf.emplace(features[i].node, static_cast<int>(i));

    std::vector<NodeSet> reads(count);
    for (std::size_t i = 0; i < count; ++i)
        CollectReads(features[i].node, reads[i]);

    m_Affected.resize(count);
    for (std::size_t b = 0; b < count; ++b) {
        NodeSet writes;
        CollectWrites(features[b].node, writes);
        std::vector<bool> hit(count, false);
        hit[b] = true;
        for (std::size_t a = 0; a < count; ++a) {
            if (hit[a])
                continue;
            hit[a] = std::any_of(writes.begin(), writes.end(),
                                 [&](ArvGcNode* written) { return reads[a].count(written) != 0; });
        }
        // The features a selector names through pSelected.
        for (ArvDomNode* child = arv_dom_node_get_first_child(ARV_DOM_NODE(features[b].node)); child != nullptr;
             child = arv_dom_node_get_next_sibling(child)) {
            if (!ARV_IS_GC_PROPERTY_NODE(child))
                continue;
            auto* property = ARV_GC_PROPERTY_NODE(child);
            if (arv_gc_property_node_get_node_type(property) != ARV_GC_PROPERTY_NODE_TYPE_P_SELECTED)
                continue;
            auto found = indexOf.find(arv_gc_property_node_get_linked_node(property));
            if (found != indexOf.end())
                hit[found->second] = true;
        }
        m_Affected[b].push_back(static_cast<int>(b));
        for (std::size_t a = 0; a < count; ++a) {
            if (a != b && hit[a])
                m_Affected[b].push_back(static_cast<int>(a));
        }
    }
}

std::vector<ArvGcNode*> ArvDependencyGraph::Reads(ArvGcNode* node)
{
    NodeSet reads{node};
    CollectReads(node, reads);
    return std::vector<ArvGcNode*>(reads.begin(), reads.end());
}

const std::vector<int>& ArvDependencyGraph::Affected(int index) const
{
    static const std::vector<int> none;
    if (index < 0 || static_cast<std::size_t>(index) >= m_Affected.size())
        return none;
    return m_Affected[index];
}

}  // namespace ZMT::PkoAPI::Arv
