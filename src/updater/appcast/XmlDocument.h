#pragma once

#include "base/Bytes.h"

#include <libxml/tree.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::updater {

/// An element of a document. The document must outlive it.
class XmlElement {
public:
    explicit XmlElement(const xmlNode* node) : node(node) {}

    /// Whether the element has this name and namespace; "": no namespace.
    bool is(std::string_view name, std::string_view nameSpace = {}) const;
    /// The child elements, in order.
    std::vector<XmlElement> children() const;
    /// The first child of that name.
    std::optional<XmlElement> child(std::string_view name, std::string_view nameSpace = {}) const;
    bool hasAttribute(std::string_view name, std::string_view nameSpace = {}) const;
    /// Empty if there is no such attribute.
    std::string attribute(std::string_view name, std::string_view nameSpace = {}) const;
    /// All text inside, trimmed.
    std::string text() const;

private:
    const xmlAttr* find(std::string_view name, std::string_view nameSpace) const;

    const xmlNode* node;
};

/// An XML document from an untrusted source. Nothing is fetched. A document type declaration, which
/// could define entities, is an error; so is nesting deeper than 256 elements.
class XmlDocument {
public:
    /// Throws std::runtime_error with the cause, for the log.
    explicit XmlDocument(ByteView bytes);

    XmlElement root() const { return XmlElement(xmlDocGetRootElement(document.get())); }

private:
    struct Deleter {
        void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    };
    std::unique_ptr<xmlDoc, Deleter> document;
};

} // namespace kelo::updater
