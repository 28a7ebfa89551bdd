#include "ArvDescriptionCheck.h"

#include <PkoAPI/PkoCommonTypes.h>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <cstring>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace ZMT::PkoAPI::Arv {

namespace {

struct ContextDeleter {
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};
struct DocDeleter {
    void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
struct XmlCharDeleter {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using ContextPtr = std::unique_ptr<xmlParserCtxt, ContextDeleter>;
using DocPtr = std::unique_ptr<xmlDoc, DocDeleter>;
using XmlText = std::unique_ptr<xmlChar, XmlCharDeleter>;

std::string Name(const xmlChar* name)
{
    return name != nullptr ? std::string(reinterpret_cast<const char*>(name)) : std::string();
}

std::string Trimmed(const std::string& text)
{
    const char* const blank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blank);
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(blank) - first + 1);
}

std::string AttributeOf(xmlNode* element, const char* name)
{
    XmlText value(xmlGetProp(element, reinterpret_cast<const xmlChar*>(name)));
    return Name(value.get());
}

std::string TextOf(xmlNode* element)
{
    XmlText value(xmlNodeGetContent(element));
    return Trimmed(Name(value.get()));
}

// Whether a pointer element or attribute (p followed by a capital) makes its
// node evaluate the node it names when the node itself is read or written,
// so that a cycle of such pointers recurses without end.
bool IsPointer(const std::string& name)
{
    return name.size() > 1 && name[0] == 'p' && name[1] >= 'A' && name[1] <= 'Z';
}

bool Evaluates(const std::string& pointer)
{
    // pSelected lists what a selector selects, for browsing: reading the
    // selector never reads them. pInvalidator only drops a cached value when
    // the named node is written; nothing is read through it. pFeature lists a
    // category's members, pAlias and pCastAlias name another view of the
    // same feature: none is followed when a value is read. Every other
    // pointer (pValue, pIndex, pAddress, pMin, pMax, pInc, pIsAvailable,
    // pIsImplemented, pIsLocked, pVariable, pPort, pLength, pValueIndexed,
    // pValueDefault, pCommandValue, ...) is read to evaluate its node.
    static const char* const kSkipped[] = {"pSelected", "pInvalidator", "pFeature", "pAlias", "pCastAlias"};
    for (const char* skipped : kSkipped) {
        if (pointer == skipped)
            return false;
    }
    return true;
}

// The description's nodes with the nodes their evaluation reads.
struct Graph {
    std::vector<std::string> names;
    std::unordered_map<std::string, int> index;
    std::vector<std::vector<std::string>> targets;

    int Add(const std::string& name)
    {
        const auto found = index.find(name);
        if (found != index.end())
            return found->second;
        index.emplace(name, static_cast<int>(names.size()));
        names.push_back(name);
        targets.emplace_back();
        return static_cast<int>(names.size()) - 1;
    }

    // Pointers anywhere inside a node's element belong to the node: an
    // enumeration's entries, a register's pIndex, a SwissKnife's pVariable.
    void CollectPointers(xmlNode* element, int node)
    {
        for (xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
            const std::string name = Name(attribute->name);
            if (IsPointer(name) && Evaluates(name))
                targets[node].push_back(AttributeOf(element, name.c_str()));
        }
        for (xmlNode* child = element->children; child != nullptr; child = child->next) {
            if (child->type != XML_ELEMENT_NODE)
                continue;
            const std::string name = Name(child->name);
            if (IsPointer(name)) {
                if (Evaluates(name))
                    targets[node].push_back(TextOf(child));
                continue;
            }
            CollectPointers(child, node);
        }
    }

    // Nodes are the named children of RegisterDescription and of its groups.
    void CollectNodes(xmlNode* container)
    {
        for (xmlNode* child = container->children; child != nullptr; child = child->next) {
            if (child->type != XML_ELEMENT_NODE)
                continue;
            if (Name(child->name) == "Group") {
                CollectNodes(child);
                continue;
            }
            const std::string name = AttributeOf(child, "Name");
            if (!name.empty())
                CollectPointers(child, Add(name));
        }
    }

    // The nodes of one cycle, first node repeated at the end; empty if none.
    // Iterative: a long chain must not take the stack either.
    std::vector<std::string> FindCycle() const
    {
        enum State : char { kUnseen, kOnPath, kDone };
        std::vector<State> state(names.size(), kUnseen);
        struct Step {
            int node;
            std::size_t next;
        };
        for (std::size_t start = 0; start < names.size(); ++start) {
            if (state[start] != kUnseen)
                continue;
            std::vector<Step> path{{static_cast<int>(start), 0}};
            state[start] = kOnPath;
            while (!path.empty()) {
                Step& step = path.back();
                const std::vector<std::string>& out = targets[step.node];
                if (step.next == out.size()) {
                    state[step.node] = kDone;
                    path.pop_back();
                    continue;
                }
                const auto found = index.find(out[step.next++]);
                // A pointer to a node the description lacks is Aravis's
                // business: it reads as an error, it does not recurse.
                if (found == index.end())
                    continue;
                const int target = found->second;
                if (state[target] == kOnPath) {
                    std::vector<std::string> cycle;
                    bool inCycle = false;
                    for (const Step& on : path) {
                        inCycle = inCycle || on.node == target;
                        if (inCycle)
                            cycle.push_back(names[on.node]);
                    }
                    cycle.push_back(names[target]);
                    return cycle;
                }
                if (state[target] == kUnseen) {
                    state[target] = kOnPath;
                    path.push_back({target, 0});
                }
            }
        }
        return {};
    }
};

}  // namespace

int ArvDescriptionCheck::Check(const char* xml, std::size_t size, std::string& problem)
{
    problem.clear();
    // Some sizes count a terminating NUL.
    const std::size_t length = xml != nullptr ? strnlen(xml, size) : 0;
    if (length == 0) {
        problem = "the camera's GenICam description is empty";
        return PkoErrorBadDescription;
    }
    ContextPtr context(xmlNewParserCtxt());
    if (!context)
        return PkoErrorResources;
    // Quiet (the message goes to the caller, not to stderr) and offline.
    DocPtr doc(xmlCtxtReadMemory(context.get(), xml, static_cast<int>(length), "description.xml", nullptr,
                                 XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE));
    const xmlError* error = xmlCtxtGetLastError(context.get());
    if (!doc || !context->wellFormed || (error != nullptr && error->level >= XML_ERR_ERROR)) {
        problem = "the camera's GenICam description does not parse completely";
        if (error != nullptr) {
            std::string message = Trimmed(error->message != nullptr ? error->message : "");
            problem += " (line " + std::to_string(error->line) + ": " + message + ")";
        }
        problem += "; it may be cut off";
        return PkoErrorBadDescription;
    }
    xmlNode* root = xmlDocGetRootElement(doc.get());
    if (root == nullptr || Name(root->name) != "RegisterDescription") {
        problem = "the camera's GenICam description has no RegisterDescription";
        return PkoErrorBadDescription;
    }
    Graph graph;
    graph.CollectNodes(root);
    const std::vector<std::string> cycle = graph.FindCycle();
    if (!cycle.empty()) {
        std::string chain;
        for (const std::string& node : cycle)
            chain += (chain.empty() ? "" : " -> ") + node;
        problem = "the camera's GenICam description has a cycle of pointers between its nodes: " + chain;
        return PkoErrorBadDescription;
    }
    return PkoErrorSuccess;
}

}  // namespace ZMT::PkoAPI::Arv
