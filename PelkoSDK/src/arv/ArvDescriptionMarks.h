#ifndef PKOAPI_SRC_ARV_ARVDESCRIPTIONMARKS_H
#define PKOAPI_SRC_ARV_ARVDESCRIPTIONMARKS_H

#include <cstddef>
#include <string>
#include <unordered_map>

namespace ZMT::PkoAPI::Arv {

// What a GenICam description says about caching and change, node by node:
// whether a node's value may change by itself (IsVolatile, PollingTime) and
// whether the description says anything about caching at all (Cachable,
// IsVolatile, PollingTime, pInvalidator anywhere). Aravis keeps Cachable and
// pInvalidator but drops IsVolatile, so the description's text is read here.
class ArvDescriptionMarks {
public:
    struct Node {
        bool isVolatile = false;
        // Milliseconds; 0 when the node has none.
        long long pollingTime = 0;
    };

    // Reads the description's XML text; a text that cannot be read carries no
    // marks.
    static ArvDescriptionMarks Parse(const char* xml, std::size_t size);

    // True when the description carries caching information: only then may
    // its registers be cached, since Aravis caches unmarked registers too.
    bool Marked() const { return m_Marked; }
    // The node's marks; a node that may change by itself is volatile or has
    // a polling time. Null for a node without either.
    const Node* Find(const std::string& name) const;

private:
    bool m_Marked = false;
    std::unordered_map<std::string, Node> m_Nodes;

    friend struct MarksParser;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
