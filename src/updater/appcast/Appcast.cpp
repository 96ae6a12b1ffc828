#include "updater/appcast/Appcast.h"

#include "base/Translation.h"
#include "updater/appcast/AppcastReader.h"
#include "updater/appcast/XmlDocument.h"
#include "updater/error/UpdateError.h"

#include <stdexcept>

namespace kelo::updater {

namespace {

[[noreturn]] void refuse(const std::string& cause) {
    throw UpdateError(
        UpdateErrorKind::feed,
        translated("The list of updates could not be read. Please try again later, or ask Kelo's "
                   "publisher."),
        cause);
}

XmlDocument documentOf(ByteView bytes) {
    if (bytes.size() > appcastLimit)
        refuse("the feed is longer than 4 MiB");
    try {
        return XmlDocument(bytes);
    } catch (const std::runtime_error& problem) {
        refuse(std::string("the feed is not well-formed XML: ") + problem.what());
    }
}

} // namespace

Appcast parseAppcast(ByteView bytes) {
    const XmlDocument document = documentOf(bytes);
    const XmlElement root = document.root();
    const auto channel = root.is("rss") ? root.child("channel") : std::nullopt;
    if (!channel)
        refuse("the feed is not RSS: it has no channel");

    Appcast appcast;
    for (const XmlElement& element : channel->children()) {
        if (!element.is("item"))
            continue;
        try {
            appcast.items.push_back(readAppcastItem(element));
        } catch (const std::invalid_argument& problem) {
            const auto title = element.child("title");
            appcast.problems.push_back("item \"" + (title ? title->text() : "") +
                                       "\" is left out: " + problem.what());
        }
    }
    return appcast;
}

} // namespace kelo::updater
