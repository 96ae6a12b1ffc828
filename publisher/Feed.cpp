#include "publisher/Feed.h"

#include "publisher/Failure.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <string_view>

namespace kelo::publisher {

namespace {

constexpr const char* appcastNamespace = "http://www.andymatuschak.org/xml-namespaces/sparkle";

constexpr const char* warning =
    " Signed below. After a change by hand, run kelo-appcast generate again. ";

struct DocumentDeleter {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using Document = std::unique_ptr<xmlDoc, DocumentDeleter>;

struct TextDeleter {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlText = std::unique_ptr<xmlChar, TextDeleter>;

const xmlChar* xml(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

std::string textOf(XmlText text) {
    return text ? reinterpret_cast<const char*>(text.get()) : "";
}

bool hasName(const xmlNode* node, std::string_view name) {
    return node->type == XML_ELEMENT_NODE && reinterpret_cast<const char*>(node->name) == name;
}

xmlNode* childOf(const xmlNode* node, std::string_view name) {
    for (xmlNode* child = node ? node->children : nullptr; child; child = child->next) {
        if (hasName(child, name))
            return child;
    }
    return nullptr;
}

std::string contentOf(xmlNode* node) {
    return node ? textOf(XmlText(xmlNodeGetContent(node))) : "";
}

Document parse(const std::string& feed) {
    if (feed.empty())
        return nullptr;
    Document document(xmlReadMemory(feed.data(), static_cast<int>(feed.size()), nullptr, nullptr,
                                    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    const xmlNode* const root = document ? xmlDocGetRootElement(document.get()) : nullptr;
    if (!root || !hasName(root, "rss"))
        throw Failure("The existing feed cannot be read. Repair appcast.xml, or move it away to "
                      "start a new one.");
    return document;
}

std::vector<xmlNode*> itemsOf(const Document& document) {
    std::vector<xmlNode*> items;
    const xmlNode* const channel =
        document ? childOf(xmlDocGetRootElement(document.get()), "channel") : nullptr;
    for (xmlNode* node = channel ? channel->children : nullptr; node; node = node->next) {
        if (hasName(node, "item"))
            items.push_back(node);
    }
    return items;
}

std::string fileNameOf(const xmlNode* item) {
    xmlNode* const enclosure = childOf(item, "enclosure");
    const std::string url =
        enclosure ? textOf(XmlText(xmlGetNoNsProp(enclosure, xml("url")))) : std::string();
    return url.substr(url.rfind('/') + 1);
}

xmlNode* oldItem(const std::vector<xmlNode*>& items, const FeedItem& item) {
    const auto found = std::ranges::find_if(items, [&](const xmlNode* node) {
        return fileNameOf(node) == item.fileName &&
               contentOf(childOf(node, "version")) == item.version;
    });
    return found == items.end() ? nullptr : *found;
}

std::string dateText(std::chrono::sys_seconds date) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(date);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 64> text{};
    const std::size_t length =
        std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S +0000", &parts);
    return {text.data(), length};
}

std::string typeOf(const std::string& fileName) {
    if (fileName.ends_with(".deb"))
        return "application/vnd.debian.binary-package";
    if (fileName.ends_with(".zst"))
        return "application/zstd";
    return fileName.ends_with(".xz") ? "application/x-xz" : "application/gzip";
}

/// Elements of an item that this program always writes itself.
bool isOurs(const xmlNode* node) {
    constexpr std::array<std::string_view, 7> names{
        "title", "version", "shortVersionString", "pubDate", "link", "description", "enclosure"};
    return std::ranges::any_of(names, [&](auto name) { return hasName(node, name); });
}

class FeedWriter {
public:
    FeedWriter() : document(xmlNewDoc(xml("1.0"))) {
        xmlNode* const root = xmlNewNode(nullptr, xml("rss"));
        xmlDocSetRootElement(document.get(), root);
        xmlNewProp(root, xml("version"), xml("2.0"));
        appcast = xmlNewNs(root, xml(appcastNamespace), xml("sparkle"));
        xmlAddChild(root, xmlNewDocComment(document.get(), xml(warning)));
        channel = xmlNewChild(root, nullptr, xml("channel"), nullptr);
        add(channel, nullptr, "title", "Kelo");
    }

    void write(const FeedItem& item, xmlNode* old, const std::string& now) {
        xmlNode* const node = xmlNewChild(channel, nullptr, xml("item"), nullptr);
        add(node, nullptr, "title", "Version " + item.shortVersion);
        add(node, appcast, "version", item.version);
        add(node, appcast, "shortVersionString", item.shortVersion);
        const std::string date = contentOf(childOf(old, "pubDate"));
        add(node, nullptr, "pubDate", date.empty() ? now : date);
        const std::string oldLink = contentOf(childOf(old, "link"));
        if (!item.minimumSystem.empty())
            add(node, appcast, "minimumSystemVersion", item.minimumSystem);
        if (!item.pageUrl.empty() || !oldLink.empty())
            add(node, nullptr, "link", item.pageUrl.empty() ? oldLink : item.pageUrl);
        if (item.notes)
            writeNotes(node, *item.notes);
        else if (xmlNode* const notes = childOf(old, "description"))
            copy(notes, node);
        if (!item.minimumUpdateVersion.empty())
            add(node, appcast, "minimumUpdateVersion", item.minimumUpdateVersion);
        for (xmlNode* kept = old ? old->children : nullptr; kept; kept = kept->next) {
            const bool isReplaced =
                (!item.minimumSystem.empty() && hasName(kept, "minimumSystemVersion")) ||
                (!item.minimumUpdateVersion.empty() && hasName(kept, "minimumUpdateVersion"));
            if (kept->type == XML_ELEMENT_NODE && !isOurs(kept) && !isReplaced)
                copy(kept, node);
        }
        writeEnclosure(node, item);
    }

    std::string text() const {
        xmlChar* bytes = nullptr;
        int length = 0;
        xmlDocDumpFormatMemoryEnc(document.get(), &bytes, &length, "UTF-8", 1);
        return textOf(XmlText(bytes));
    }

private:
    static xmlNode* add(xmlNode* parent, xmlNs* space, const std::string& name,
                        const std::string& content) {
        return xmlNewTextChild(parent, space, xml(name), xml(content));
    }

    void copy(xmlNode* from, xmlNode* to) const {
        xmlNode* const copied = xmlDocCopyNode(from, document.get(), 1);
        if (!copied)
            return;
        xmlAddChild(to, copied);
        xmlReconciliateNs(document.get(), copied);
    }

    void writeNotes(xmlNode* item, const Notes& notes) const {
        xmlNode* const node = add(item, nullptr, "description", notes.text);
        xmlNewNsProp(node, appcast, xml("format"),
                     xml(notes.form == NotesForm::markdown ? "markdown" : "plain-text"));
    }

    void writeEnclosure(xmlNode* item, const FeedItem& description) const {
        xmlNode* const node = xmlNewChild(item, nullptr, xml("enclosure"), nullptr);
        xmlNewProp(node, xml("url"), xml(description.url));
        xmlNewProp(node, xml("length"), xml(std::to_string(description.length)));
        xmlNewProp(node, xml("type"), xml(typeOf(description.fileName)));
        xmlNewNsProp(node, appcast, xml("os"), xml(description.system));
        xmlNewNsProp(node, appcast, xml("edSignature"), xml(description.signature));
    }

    Document document;
    xmlNs* appcast = nullptr;   ///< of the document
    xmlNode* channel = nullptr; ///< of the document
};

} // namespace

std::string writeFeed(const std::vector<FeedItem>& items, const std::string& oldFeed,
                      std::chrono::sys_seconds now) {
    const Document old = parse(oldFeed);
    const auto oldItems = itemsOf(old);
    FeedWriter writer;
    for (const auto& item : items)
        writer.write(item, oldItem(oldItems, item), dateText(now));
    return writer.text();
}

std::vector<OldItem> packagesIn(const std::string& feed) {
    const Document document = parse(feed);
    std::vector<OldItem> packages;
    for (const xmlNode* node : itemsOf(document)) {
        const std::string name = fileNameOf(node);
        xmlNode* const enclosure = childOf(node, "enclosure");
        if (!name.empty())
            packages.push_back({name, contentOf(childOf(node, "version")),
                                contentOf(childOf(node, "shortVersionString")),
                                textOf(XmlText(xmlGetNsProp(enclosure, xml("edSignature"),
                                                            xml(appcastNamespace))))});
    }
    return packages;
}

std::vector<std::string> droppedFiles(const std::vector<FeedItem>& items,
                                      const std::vector<OldItem>& oldItems) {
    std::vector<std::string> dropped;
    for (const auto& old : oldItems) {
        if (std::ranges::find(items, old.fileName, &FeedItem::fileName) == items.end())
            dropped.push_back(old.fileName);
    }
    return dropped;
}

} // namespace kelo::publisher
