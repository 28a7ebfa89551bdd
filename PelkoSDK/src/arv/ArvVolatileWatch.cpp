#include "ArvVolatileWatch.h"

#include "ArvDependencyGraph.h"

#include <algorithm>
#include <cstdio>
#include <unordered_map>

namespace ZMT::PkoAPI::Arv {

namespace {

// Registers longer than this are read through their node.
constexpr gint64 kMaxRawLength = 256;

// True for a register whose port is the device's own memory.
bool OnDevicePort(ArvGcNode* node)
{
    if (!ARV_IS_GC_REGISTER(node))
        return false;
    for (ArvDomNode* child = arv_dom_node_get_first_child(ARV_DOM_NODE(node)); child != nullptr;
         child = arv_dom_node_get_next_sibling(child)) {
        if (!ARV_IS_GC_PROPERTY_NODE(child) ||
            arv_gc_property_node_get_node_type(ARV_GC_PROPERTY_NODE(child)) != ARV_GC_PROPERTY_NODE_TYPE_P_PORT)
            continue;
        ArvGcNode* port = arv_gc_property_node_get_linked_node(ARV_GC_PROPERTY_NODE(child));
        return port != nullptr && ARV_IS_GC_FEATURE_NODE(port) &&
               g_strcmp0(arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(port)), "Device") == 0;
    }
    return false;
}

}  // namespace

ArvVolatileWatch::ArvVolatileWatch(const std::vector<ArvNodeInfo>& features, const ArvDescriptionMarks& marks,
                                   std::chrono::milliseconds defaultPeriod)
    : m_ByFeature(features.size()), m_DefaultPeriod(defaultPeriod), m_Changed(features.size(), false)
{
    std::unordered_map<ArvGcNode*, int> indexOf;
    for (std::size_t i = 0; i < features.size(); ++i) {
        for (ArvGcNode* node : ArvDependencyGraph::Reads(features[i].node)) {
            if (!ARV_IS_GC_FEATURE_NODE(node))
                continue;
            const char* name = arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(node));
            const ArvDescriptionMarks::Node* mark = marks.Find(name != nullptr ? name : "");
            if (mark == nullptr)
                continue;
            auto found = indexOf.find(node);
            if (found == indexOf.end()) {
                Watched watched;
                watched.node = node;
                watched.period = mark->pollingTime > 0 ? std::chrono::milliseconds(mark->pollingTime) : defaultPeriod;
                watched.raw = OnDevicePort(node);
                m_Watched.push_back(std::move(watched));
                found = indexOf.emplace(node, static_cast<int>(m_Watched.size() - 1)).first;
            }
            m_Watched[found->second].readers.push_back(static_cast<int>(i));
            m_ByFeature[i].push_back(found->second);
        }
    }
}

bool ArvVolatileWatch::Watches(int feature) const
{
    return feature >= 0 && static_cast<std::size_t>(feature) < m_ByFeature.size() && !m_ByFeature[feature].empty();
}

std::vector<int> ArvVolatileWatch::StartRound(const std::vector<int>& observed, Clock::time_point now,
                                              std::chrono::milliseconds& untilNext)
{
    m_Round.clear();
    m_Changed.assign(m_ByFeature.size(), false);
    std::vector<int> due;
    Clock::time_point next = now + m_DefaultPeriod;
    for (int feature : observed) {
        for (int index : m_ByFeature[feature]) {
            Watched& watched = m_Watched[index];
            if (std::find(due.begin(), due.end(), index) != due.end())
                continue;
            if (watched.due <= now) {
                due.push_back(index);
                watched.due = now + watched.period;
            }
            next = std::min(next, watched.due);
        }
    }
    untilNext = std::chrono::duration_cast<std::chrono::milliseconds>(next - now);
    return due;
}

std::string ArvVolatileWatch::ReadValue(Watched& watched, ArvDevice* device, GError** error)
{
    if (watched.raw) {
        ArvGcRegister* reg = ARV_GC_REGISTER(watched.node);
        GError* local = nullptr;
        const guint64 address = arv_gc_register_get_address(reg, &local);
        const gint64 length = local == nullptr ? arv_gc_register_get_length(reg, &local) : 0;
        if (local == nullptr && length > 0 && length <= kMaxRawLength) {
            const auto key = std::make_pair(address, length);
            const auto seen = m_Round.find(key);
            if (seen != m_Round.end())
                return seen->second;
            std::string bytes(static_cast<std::size_t>(length), '\0');
            if (!arv_device_read_memory(device, address, static_cast<guint32>(length), &bytes[0], error))
                return std::string();
            m_Round.emplace(key, bytes);
            return bytes;
        }
        if (local != nullptr) {
            g_propagate_error(error, local);
            return std::string();
        }
    }
    ArvGcNode* node = watched.node;
    if (ARV_IS_GC_INTEGER(node))
        return std::to_string(arv_gc_integer_get_value(ARV_GC_INTEGER(node), error));
    if (ARV_IS_GC_FLOAT(node)) {
        char text[64];
        std::snprintf(text, sizeof text, "%.17g", arv_gc_float_get_value(ARV_GC_FLOAT(node), error));
        return text;
    }
    if (ARV_IS_GC_BOOLEAN(node))
        return arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), error) ? "1" : "0";
    if (ARV_IS_GC_STRING(node)) {
        const char* text = arv_gc_string_get_value(ARV_GC_STRING(node), error);
        return text != nullptr ? text : "";
    }
    return std::string();
}

void ArvVolatileWatch::ReadLocked(int index, ArvDevice* device, std::vector<int>& changed, GError** error)
{
    Watched& watched = m_Watched[index];
    GError* local = nullptr;
    std::string value = ReadValue(watched, device, &local);
    if (local != nullptr) {
        g_propagate_error(error, local);
        return;
    }
    if (watched.last && *watched.last != value) {
        for (int reader : watched.readers) {
            if (!m_Changed[reader])
                changed.push_back(reader);
            m_Changed[reader] = true;
        }
    }
    watched.last = std::move(value);
}

void ArvVolatileWatch::Forget(int feature)
{
    if (feature < 0 || static_cast<std::size_t>(feature) >= m_ByFeature.size())
        return;
    for (int index : m_ByFeature[feature])
        m_Watched[index].last.reset();
}

}  // namespace ZMT::PkoAPI::Arv
