#include "base/Url.h"
#include "base/Utf8.h"
#include "updater/notes/NotesBuilder.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>

namespace kelo::updater {

namespace {

/// Bounds the recursion; real notes are far less deep.
constexpr int deepest = 100;

struct XmlTextDeleter {
    void operator()(xmlChar* text) const { xmlFree(text); }
};

struct HtmlDeleter {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

template <std::size_t Size>
bool isOneOf(std::string_view name, const std::array<std::string_view, Size>& names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array<std::string_view, 14> wordless = {
    "script", "style", "head",   "title",  "noscript", "template", "iframe",
    "object", "svg",   "canvas", "select", "textarea", "audio",    "video"};
constexpr std::array<std::string_view, 6> headings = {"h1", "h2", "h3", "h4", "h5", "h6"};
constexpr std::array<std::string_view, 21> blocks = {
    "p",  "div", "section",    "article", "header", "footer", "main",
    "ul", "ol",  "blockquote", "table",   "tr",     "br",     "hr",
    "dl", "dt",  "dd",         "figure",  "body",   "aside",  "nav"};
constexpr std::array<std::string_view, 2> strong = {"b", "strong"};
constexpr std::array<std::string_view, 4> emphasized = {"i", "em", "cite", "dfn"};
constexpr std::array<std::string_view, 4> code = {"code", "kbd", "samp", "tt"};

/// The library gives back bytes that are not UTF-8 when a page only claims to be UTF-16, for
/// instance by its first two bytes.
void addText(std::string_view text, const TextRun& style, NotesBuilder& builder) {
    if (isWellFormedUtf8(text))
        builder.add(text, style);
}

/// The address of a link, whose scheme is in small letters; empty if it is not one that the browser
/// may be given.
std::string addressOf(const xmlNode* link) {
    const std::unique_ptr<xmlChar, XmlTextDeleter> given(
        xmlGetProp(link, reinterpret_cast<const xmlChar*>("href")));
    if (!given)
        return {};
    const auto address = Url::parse(reinterpret_cast<const char*>(given.get()));
    if (!address || address->scheme() != "https")
        return {};
    return address->scheme() + address->absoluteString().substr(address->scheme().size());
}

void walk(const xmlNode* node, const TextRun& style, int depth, NotesBuilder& builder);

/// Whether it is the first paragraph of a list item, which has begun already.
bool beginsItem(const xmlNode* paragraph) {
    const auto isElement = [](const xmlNode* node, std::string_view name) {
        return node && node->type == XML_ELEMENT_NODE &&
               reinterpret_cast<const char*>(node->name) == name;
    };
    return isElement(paragraph, "p") && isElement(paragraph->parent, "li") &&
           !xmlPreviousElementSibling(const_cast<xmlNode*>(paragraph));
}

void walkElement(const xmlNode* node, TextRun style, int depth, NotesBuilder& builder) {
    const std::string_view name = reinterpret_cast<const char*>(node->name);
    if (isOneOf(name, wordless))
        return;
    style.strong = style.strong || isOneOf(name, strong);
    style.emphasized = style.emphasized || isOneOf(name, emphasized);
    style.code = style.code || isOneOf(name, code);
    if (name == "a")
        style.link = addressOf(node);
    const bool heading = isOneOf(name, headings);
    const bool block = heading || name == "li" || name == "pre" || isOneOf(name, blocks);
    if (heading)
        builder.begin(ParagraphKind::heading);
    else if (name == "li")
        builder.begin(ParagraphKind::listItem);
    else if (name == "pre")
        builder.begin(ParagraphKind::code);
    else if (block && !beginsItem(node))
        builder.begin(ParagraphKind::body);
    walk(node->children, style, depth + 1, builder);
    if (block)
        builder.begin(ParagraphKind::body);
}

void walk(const xmlNode* node, const TextRun& style, int depth, NotesBuilder& builder) {
    for (; node && depth < deepest; node = node->next) {
        if (node->type == XML_TEXT_NODE && node->content)
            addText(reinterpret_cast<const char*>(node->content), style, builder);
        else if (node->type == XML_ELEMENT_NODE)
            walkElement(node, style, depth, builder);
    }
}

} // namespace

ReleaseNotes readHtmlNotes(std::string_view html) {
    const int options = HTML_PARSE_NONET | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                        HTML_PARSE_RECOVER | HTML_PARSE_NODEFDTD;
    const std::unique_ptr<xmlDoc, HtmlDeleter> document(
        htmlReadMemory(html.data(), static_cast<int>(html.size()), nullptr, "UTF-8", options));
    NotesBuilder builder;
    if (document)
        walk(xmlDocGetRootElement(document.get()), {}, 0, builder);
    return builder.finish();
}

} // namespace kelo::updater
