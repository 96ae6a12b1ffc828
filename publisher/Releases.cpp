#include "publisher/Releases.h"

#include "base/Base64.h"
#include "publisher/Failure.h"
#include "publisher/Files.h"
#include "updater/appcast/Appcast.h"
#include "updater/appcast/Version.h"

#include <algorithm>

namespace kelo::publisher {

namespace {

const OldItem* oldItemOf(const std::vector<OldItem>& oldItems, const Release& release) {
    const auto found = std::ranges::find(oldItems, release.item.fileName, &OldItem::fileName);
    return found == oldItems.end() ? nullptr : &*found;
}

std::string textOf(const SigningKey& key) {
    return base64Encode(key.publicKey());
}

bool isFor(const Release& release, const SigningKey& key) {
    return release.package.publicKey == textOf(key);
}

bool isSignedWith(const SigningKey& key, const std::string& signature, const MappedFile& file) {
    const auto bytes = updater::parseSignature(signature);
    return bytes && updater::verifies(key.publicKey(), *bytes, file.bytes());
}

void requireKnownKey(const Release& release, const ReleaseKeys& keys) {
    if (release.package.publicKey.empty() || isFor(release, keys.current) ||
        (keys.next && isFor(release, *keys.next)))
        return;
    throw Failure("\"" + release.path.string() +
                  "\" was built with another public key (KELO_UPDATE_PUBLIC_KEY). Once "
                  "installed, it would refuse updates that are signed with this key.");
}

[[noreturn]] void refuseChanged(const Release& release) {
    throw Failure("\"" + release.path.string() +
                  "\" is not what was published under that name: it was changed since, or signed "
                  "with a key that was not given. Give a changed release a new version and build "
                  "number. With --replace it is signed again.");
}

/// The key that the release's present signature is from; null for a release that has none to keep.
const SigningKey* keyOfOldSignature(const Release& release, const ReleaseKeys& keys,
                                    const std::vector<OldItem>& oldItems, bool replace) {
    const OldItem* const old = oldItemOf(oldItems, release);
    if (!old || old->signature.empty())
        return nullptr;
    const MappedFile file(release.path);
    if (isSignedWith(keys.current, old->signature, file))
        return &keys.current;
    if (keys.next && isSignedWith(*keys.next, old->signature, file))
        return &*keys.next;
    if (!replace)
        refuseChanged(release);
    return nullptr;
}

} // namespace

void signReleases(std::vector<Release>& releases, const ReleaseKeys& keys,
                  const std::vector<OldItem>& oldItems, bool replace) {
    std::optional<std::string> bridge; // the version that every copy can take and has the next key
    for (auto release = releases.rbegin(); release != releases.rend(); ++release) {
        requireKnownKey(*release, keys);
        const bool hasNext = keys.next && isFor(*release, *keys.next);
        const SigningKey* key = keyOfOldSignature(*release, keys, oldItems, replace);
        const bool isBridge =
            !bridge || updater::compareVersions(*bridge, release->item.version) == 0;
        if (!key)
            key = hasNext && !isBridge ? &*keys.next : &keys.current;
        if (hasNext && key == &keys.current && !bridge)
            bridge = release->item.version;
        const MappedFile file(release->path);
        release->item.signature = base64Encode(key->sign(file.bytes()));
        release->item.length = file.bytes().size();
        release->isSignedWithNext = key != &keys.current;
        if (release->isSignedWithNext && bridge)
            release->item.minimumUpdateVersion = *bridge;
    }
}

std::vector<std::string> remarksOn(const std::vector<Release>& releases,
                                   const std::vector<OldItem>& oldItems, const ReleaseKeys& keys) {
    std::vector<std::string> remarks;
    const auto describe = [](const FeedItem& item) {
        return item.fileName + " (build number " + item.version + ")";
    };
    for (std::size_t index = 0; index + 1 < releases.size(); ++index) {
        const FeedItem& newer = releases[index].item;
        const FeedItem& older = releases[index + 1].item;
        if (newer.shortVersion == older.shortVersion)
            continue;
        if (updater::compareVersions(newer.version, older.version) == 0)
            remarks.push_back("The build number repeats: a copy with " + describe(newer) +
                              " never takes " + describe(older) + ", nor the other way round.");
        else if (updater::isOlder(newer.shortVersion, older.shortVersion))
            remarks.push_back("The build number falls: a copy with " + describe(newer) +
                              " never takes " + describe(older) +
                              ", whose version is the higher one.");
    }
    const auto newest = std::ranges::max_element(oldItems, updater::isOlder, &OldItem::version);
    for (const auto& release : releases) {
        if (newest != oldItems.end() && !oldItemOf(oldItems, release) &&
            updater::isOlder(release.item.version, newest->version))
            remarks.push_back("The build number falls: " + describe(release.item) +
                              " is new, and the feed had " + newest->version + " already.");
        const auto isRepeated = [&](const OldItem& old) {
            return updater::compareVersions(old.version, release.item.version) == 0 &&
                   !old.shortVersion.empty() && old.shortVersion != release.item.shortVersion;
        };
        if (std::ranges::any_of(oldItems, isRepeated) && !oldItemOf(oldItems, release))
            remarks.push_back("The build number repeats: another version in the feed had that of " +
                              describe(release.item) + ".");
    }
    const auto carriesNext = [&](const Release& release) { return isFor(release, *keys.next); };
    const auto isForAll = [&](const Release& release) {
        return carriesNext(release) && !release.isSignedWithNext;
    };
    if (keys.next && std::ranges::none_of(releases, isForAll))
        remarks.push_back("No release here has the next key (KELO_UPDATE_PUBLIC_KEY) and is signed "
                          "with the present one, so no copy comes over to the next key.");
    return remarks;
}

void requireReadable(const std::vector<FeedItem>& items, const std::string& feed) {
    const updater::Appcast read = updater::parseAppcast(bytesOf(feed));
    for (const auto& item : items) {
        const auto isIt = [&](const updater::AppcastItem& found) {
            return found.version == item.version && found.enclosure &&
                   found.enclosure->url.absoluteString() == item.url &&
                   found.enclosure->length == item.length &&
                   found.enclosure->signature == item.signature;
        };
        if (std::ranges::any_of(read.items, isIt))
            continue;
        std::string because;
        for (const auto& problem : read.problems)
            because += " (" + problem + ")";
        throw Failure("A copy of Kelo would leave \"" + item.fileName +
                      "\" out: its address would be " + item.url + because +
                      ". Use letters, digits and . _ + ~ - in the names of files and folders.");
    }
}

} // namespace kelo::publisher
