#include "ArvDescriptionMarks.h"

#include <glib.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace ZMT::PkoAPI::Arv {

// The state of one pass over the XML text. Nodes are the named children of
// RegisterDescription and of Group elements; their marks are child elements.
struct MarksParser {
    ArvDescriptionMarks& marks;
    // Element names from the root down.
    std::vector<std::string> path;
    // The name of the node element on the path, when there is one, and the
    // depth of that element.
    std::string node;
    std::size_t nodeDepth = 0;
    std::string text;

    static MarksParser& Of(gpointer data) { return *static_cast<MarksParser*>(data); }

    static bool IsMark(const std::string& element)
    {
        return element == "IsVolatile" || element == "PollingTime" || element == "Cachable" ||
               element == "pInvalidator";
    }

    static void Start(GMarkupParseContext*, const gchar* element, const gchar** names, const gchar** values,
                      gpointer data, GError**)
    {
        MarksParser& parser = Of(data);
        const bool inContainer =
            !parser.path.empty() && (parser.path.back() == "RegisterDescription" || parser.path.back() == "Group");
        parser.path.emplace_back(element);
        parser.text.clear();
        if (!inContainer)
            return;
        for (std::size_t i = 0; names[i] != nullptr; ++i) {
            if (std::strcmp(names[i], "Name") == 0) {
                parser.node = values[i];
                parser.nodeDepth = parser.path.size();
                return;
            }
        }
    }

    static void End(GMarkupParseContext*, const gchar* element, gpointer data, GError**)
    {
        MarksParser& parser = Of(data);
        const std::string name(element);
        if (!parser.node.empty() && parser.path.size() == parser.nodeDepth + 1 && IsMark(name)) {
            parser.marks.m_Marked = true;
            const std::string value = Trimmed(parser.text);
            if (name == "IsVolatile" && value == "Yes")
                parser.marks.m_Nodes[parser.node].isVolatile = true;
            else if (name == "PollingTime")
                parser.marks.m_Nodes[parser.node].pollingTime = std::atoll(value.c_str());
        }
        if (parser.path.size() == parser.nodeDepth)
            parser.node.clear();
        parser.path.pop_back();
        parser.text.clear();
    }

    static void Text(GMarkupParseContext*, const gchar* text, gsize length, gpointer data, GError**)
    {
        Of(data).text.append(text, length);
    }

    static std::string Trimmed(const std::string& text)
    {
        const char* const blank = " \t\r\n";
        const std::size_t first = text.find_first_not_of(blank);
        if (first == std::string::npos)
            return std::string();
        return text.substr(first, text.find_last_not_of(blank) - first + 1);
    }
};

ArvDescriptionMarks ArvDescriptionMarks::Parse(const char* xml, std::size_t size)
{
    ArvDescriptionMarks marks;
    if (xml == nullptr || size == 0)
        return marks;
    MarksParser parser{marks, {}, {}, 0, {}};
    const GMarkupParser callbacks = {&MarksParser::Start, &MarksParser::End, &MarksParser::Text, nullptr, nullptr};
    GMarkupParseContext* context =
        g_markup_parse_context_new(&callbacks, G_MARKUP_PREFIX_ERROR_POSITION, &parser, nullptr);
    GError* error = nullptr;
    // Some sizes count a terminating NUL.
    const std::size_t length = strnlen(xml, size);
    const bool parsed = g_markup_parse_context_parse(context, xml, static_cast<gssize>(length), &error) &&
                        g_markup_parse_context_end_parse(context, &error);
    g_markup_parse_context_free(context);
    if (error != nullptr)
        g_error_free(error);
    // Half a description could claim marks it does not have everywhere.
    return parsed ? marks : ArvDescriptionMarks();
}

const ArvDescriptionMarks::Node* ArvDescriptionMarks::Find(const std::string& name) const
{
    const auto found = m_Nodes.find(name);
    if (found == m_Nodes.end() || (!found->second.isVolatile && found->second.pollingTime <= 0))
        return nullptr;
    return &found->second;
}

}  // namespace ZMT::PkoAPI::Arv
