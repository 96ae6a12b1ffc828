#include "updater/UpdateSelection.h"
#include "updater/appcast/Appcast.h"
#include "updater/appcast/Version.h"
#include "updater/error/UpdateError.h"
#include "updater/notes/NotesReader.h"

#include <cstdlib>
#include <span>

// A feed from anybody: read, chosen from, and its notes made presentable.

using namespace kelo;

namespace {

void require(bool held) {
    if (!held)
        std::abort();
}

void examine(const updater::AppcastItem& item) {
    require(!item.version.empty());
    require(item.enclosure || item.link);
    require(!item.enclosure || item.enclosure->url.scheme() == "https");
    require(!item.link || item.link->scheme() == "https");
    require(!item.releaseNotesLink || item.releaseNotesLink->scheme() == "https");
    require(updater::compareVersions(item.version, item.version) == 0);
    for (const auto& paragraph :
         updater::readReleaseNotes(item.description, item.descriptionFormat))
        require(!paragraph.runs.empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const updater::Appcast appcast = updater::parseAppcast(std::span(data, size));
        for (const updater::AppcastItem& item : appcast.items)
            examine(item);
        updater::SelectionRules rules;
        rules.installedVersion = "1.0";
        rules.system = {"linux", "x86_64", "2.36"};
        rules.state.skippedVersion = "1.1";
        if (const auto chosen = updater::selectUpdate(appcast, rules).update)
            require(isOlder("1.0", chosen->item.version) && !isOlder(chosen->item.version, "1.0"));
    } catch (const updater::UpdateError& refused) {
        require(refused.kind() == updater::UpdateErrorKind::feed);
    }
    return 0;
}
