#pragma once

#include "base/Bytes.h"

#include <libxml/tree.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::updater {

/// An element of a document, which must outlive it.
class XmlElement {
public:
    explicit XmlElement(const xmlNode* node) : node(node) {}

    /// Whether it bears this name in this namespace; "" is for none.
    bool is(std::string_view name, std::string_view nameSpace = {}) const;
    /// The elements directly inside, in order.
    std::vector<XmlElement> children() const;
    /// The first child of that name.
    std::optional<XmlElement> child(std::string_view name, std::string_view nameSpace = {}) const;
    bool hasAttribute(std::string_view name, std::string_view nameSpace = {}) const;
    /// Empty when there is no such attribute.
    std::string attribute(std::string_view name, std::string_view nameSpace = {}) const;
    /// All text inside, without the blanks around it.
    std::string text() const;

private:
    const xmlAttr* find(std::string_view name, std::string_view nameSpace) const;

    const xmlNode* node;
};

/// An XML document from a source that is not trusted: nothing is fetched, a document type
/// declaration (and with it every entity of the document's own) is an error, and so is nesting
/// deeper than 256 elements.
class XmlDocument {
public:
    /// Throws std::runtime_error, with what is wrong for the journal.
    explicit XmlDocument(ByteView bytes);

    XmlElement root() const { return XmlElement(xmlDocGetRootElement(document.get())); }

private:
    struct Deleter {
        void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
    };
    std::unique_ptr<xmlDoc, Deleter> document;
};

} // namespace kelo::updater
