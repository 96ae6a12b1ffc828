#include "updater/appcast/XmlDocument.h"

#include "base/Text.h"

#include <libxml/parser.h>

#include <limits>
#include <stdexcept>

namespace kelo::updater {

namespace {

struct XmlDeleter {
    void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlText = std::unique_ptr<xmlChar, XmlDeleter>;

std::string_view view(const xmlChar* text) {
    return text ? reinterpret_cast<const char*>(text) : std::string_view();
}

bool inNamespace(const xmlNs* actual, std::string_view wanted) {
    return (actual ? view(actual->href) : std::string_view()) == wanted;
}

std::string ownedText(const xmlNode* node) {
    const XmlText content(xmlNodeGetContent(node));
    return std::string(trimmed(view(content.get())));
}

// The parser calls this before it reads the first declaration, so no entity is ever defined.
void refuseTypeDeclaration(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    auto* const parser = static_cast<xmlParserCtxt*>(context);
    *static_cast<bool*>(parser->_private) = true;
    xmlStopParser(parser);
}

std::string problemOf(xmlParserCtxt* parser) {
    const xmlError* const error = xmlCtxtGetLastError(parser);
    if (!error || !error->message)
        return "not well formed";
    return "line " + std::to_string(error->line) + ": " + std::string(trimmed(error->message));
}

} // namespace

XmlDocument::XmlDocument(ByteView bytes) {
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw std::runtime_error("too long");
    const std::unique_ptr<xmlParserCtxt, XmlDeleter> parser(xmlNewParserCtxt());
    if (!parser)
        throw std::bad_alloc();
    bool declaresTypes = false;
    parser->_private = &declaresTypes;
    parser->sax->internalSubset = refuseTypeDeclaration;
    document.reset(xmlCtxtReadMemory(parser.get(), reinterpret_cast<const char*>(bytes.data()),
                                     static_cast<int>(bytes.size()), nullptr, nullptr,
                                     XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (declaresTypes)
        throw std::runtime_error("it has a document type declaration");
    if (!document || !xmlDocGetRootElement(document.get()))
        throw std::runtime_error(problemOf(parser.get()));
}

bool XmlElement::is(std::string_view name, std::string_view nameSpace) const {
    return view(node->name) == name && inNamespace(node->ns, nameSpace);
}

std::vector<XmlElement> XmlElement::children() const {
    std::vector<XmlElement> found;
    for (const xmlNode* child = node->children; child; child = child->next)
        if (child->type == XML_ELEMENT_NODE)
            found.emplace_back(child);
    return found;
}

std::optional<XmlElement> XmlElement::child(std::string_view name,
                                            std::string_view nameSpace) const {
    for (const xmlNode* child = node->children; child; child = child->next)
        if (child->type == XML_ELEMENT_NODE && XmlElement(child).is(name, nameSpace))
            return XmlElement(child);
    return std::nullopt;
}

const xmlAttr* XmlElement::find(std::string_view name, std::string_view nameSpace) const {
    const xmlAttr* attribute = node->properties;
    while (attribute && (view(attribute->name) != name || !inNamespace(attribute->ns, nameSpace)))
        attribute = attribute->next;
    return attribute;
}

bool XmlElement::hasAttribute(std::string_view name, std::string_view nameSpace) const {
    return find(name, nameSpace) != nullptr;
}

std::string XmlElement::attribute(std::string_view name, std::string_view nameSpace) const {
    const xmlAttr* const found = find(name, nameSpace);
    return found ? ownedText(reinterpret_cast<const xmlNode*>(found)) : std::string();
}

std::string XmlElement::text() const {
    return ownedText(node);
}

} // namespace kelo::updater
