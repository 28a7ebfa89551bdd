#include "ArvNodeInfo.h"

#include <functional>
#include <unordered_set>

namespace ZMT::PkoAPI::Arv {

PkoFeatureDataType ArvNodeInfo::TypeOf(ArvGcNode* node)
{
    if (node == nullptr || ARV_IS_GC_CATEGORY(node))
        return PkoFeatureDataUnknown;
    if (ARV_IS_GC_ENUMERATION(node))
        return PkoFeatureDataEnum;
    if (ARV_IS_GC_ENUM_ENTRY(node))
        return PkoFeatureDataUnknown;
    if (ARV_IS_GC_COMMAND(node))
        return PkoFeatureDataCommand;
    if (ARV_IS_GC_BOOLEAN(node))
        return PkoFeatureDataBool;
    if (ARV_IS_GC_INTEGER(node))
        return PkoFeatureDataInt;
    if (ARV_IS_GC_FLOAT(node))
        return PkoFeatureDataFloat;
    if (ARV_IS_GC_STRING(node))
        return PkoFeatureDataString;
    if (ARV_IS_GC_REGISTER(node))
        return PkoFeatureDataRaw;
    return PkoFeatureDataUnknown;
}

std::vector<ArvNodeInfo> ArvNodeInfo::Walk(ArvGc* genicam)
{
    std::vector<ArvNodeInfo> features;
    ArvGcNode* root = arv_gc_get_node(genicam, "Root");
    if (root == nullptr || !ARV_IS_GC_CATEGORY(root))
        return features;

    std::unordered_set<std::string> seen;
    std::unordered_set<ArvGcNode*> visitedCategories;
    std::function<void(ArvGcCategory*, const std::string&)> visit = [&](ArvGcCategory* category,
                                                                        const std::string& path) {
        for (const GSList* item = arv_gc_category_get_features(category); item != nullptr; item = item->next) {
            const char* name = static_cast<const char*>(item->data);
            if (name == nullptr)
                continue;
            ArvGcNode* node = arv_gc_get_node(genicam, name);
            if (node == nullptr)
                continue;
            if (ARV_IS_GC_CATEGORY(node)) {
                // A category listed twice (or in a cycle) is walked once.
                if (visitedCategories.insert(node).second)
                    visit(ARV_GC_CATEGORY(node), "/" == path ? "/" + std::string(name) : path + "/" + name);
                continue;
            }
            if (!ARV_IS_GC_FEATURE_NODE(node) || !seen.insert(name).second)
                continue;
            ArvNodeInfo info;
            info.name = name;
            const char* display = arv_gc_feature_node_get_display_name(ARV_GC_FEATURE_NODE(node));
            info.displayName = display != nullptr && *display != '\0' ? display : name;
            info.category = path == "/" ? "/Root" : path;
            info.type = TypeOf(node);
            info.node = node;
            if (info.type == PkoFeatureDataEnum) {
                // Aravis keeps the entries in reverse document order.
                for (const GSList* entry = arv_gc_enumeration_get_entries(ARV_GC_ENUMERATION(node)); entry != nullptr;
                     entry = entry->next) {
                    auto* entryNode = static_cast<ArvGcNode*>(entry->data);
                    if (entryNode == nullptr || !ARV_IS_GC_FEATURE_NODE(entryNode))
                        continue;
                    info.entries.insert(info.entries.begin(),
                                        arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(entryNode)));
                    info.entryNodes.insert(info.entryNodes.begin(), entryNode);
                }
            }
            features.push_back(std::move(info));
        }
    };
    visitedCategories.insert(root);
    visit(ARV_GC_CATEGORY(root), "/");
    return features;
}

}  // namespace ZMT::PkoAPI::Arv
