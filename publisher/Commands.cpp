#include "publisher/Commands.h"

#include "base/Base64.h"
#include "publisher/Failure.h"
#include "publisher/Feed.h"
#include "publisher/Files.h"
#include "publisher/Package.h"
#include "publisher/Releases.h"
#include "publisher/SigningKey.h"

#include "updater/appcast/Appcast.h"
#include "updater/appcast/Version.h"
#include "updater/archive/Signature.h"
#include "updater/archive/SignedFeed.h"
#include "updater/error/UpdateError.h"

#include <algorithm>
#include <ostream>

namespace kelo::publisher {

namespace {

namespace fs = std::filesystem;

constexpr const char* feedName = "appcast.xml";

SigningKey loadKey(const Arguments& arguments) {
    if (arguments.key.empty())
        throw UsageError("Name the private key with --key FILE, or in the environment variable "
                         "KELO_APPCAST_KEY.");
    return SigningKey::load(arguments.key);
}

void makeKey(const Arguments& arguments, std::ostream& output, std::ostream& remarks) {
    if (arguments.key.empty())
        throw UsageError("Name a file for the new key: kelo-appcast keygen --key FILE");
    const SigningKey key = SigningKey::generate();
    key.save(arguments.key);
    output << base64Encode(key.publicKey()) << "\n";
    remarks
        << "The private key is in " << arguments.key
        << ". Keep a copy of it in a safe place: without it, you cannot update any copy of Kelo "
           "that was built with its public key.\n";
}

void signFile(const Arguments& arguments, std::ostream& output) {
    const SigningKey key = loadKey(arguments);
    const MappedFile file(arguments.files.front());
    output << "sparkle:edSignature=\"" << base64Encode(key.sign(file.bytes())) << "\" length=\""
           << file.bytes().size() << "\"\n";
}

std::optional<Notes> notesFor(const fs::path& folder, const std::string& stem) {
    if (auto text = readText(folder / (stem + ".md")))
        return Notes{std::move(*text), NotesForm::markdown};
    if (auto text = readText(folder / (stem + ".txt")))
        return Notes{std::move(*text), NotesForm::plainText};
    return std::nullopt;
}

std::string downloadUrl(const Arguments& arguments, const Package& package, const fs::path& path) {
    if (!arguments.downloadUrl.empty())
        return arguments.downloadUrl;
    if (!package.feedUrl.starts_with("https://"))
        throw Failure("\"" + path.string() +
                      "\" was built without an update feed (KELO_UPDATE_FEED). Name the folder of "
                      "the packages with --url.");
    return package.feedUrl.substr(0, package.feedUrl.rfind('/') + 1);
}

Release readRelease(const fs::path& path, const Arguments& arguments) {
    Release release;
    release.path = path;
    release.package = readPackage(path);
    const Package& package = release.package;
    FeedItem& item = release.item;
    item.version = package.version;
    item.shortVersion = package.shortVersion.empty() ? package.version : package.shortVersion;
    item.system = package.system;
    item.minimumSystem = package.minimumSystem;
    item.fileName = path.filename();
    item.url = downloadUrl(arguments, package, path) + item.fileName;
    item.pageUrl = arguments.pageUrl;
    item.notes = notesFor(path.parent_path(), packageStem(path));
    // One text serves the packages for several systems, whose names go on after the version.
    if (!item.notes)
        item.notes = notesFor(path.parent_path(), "kelo-" + item.shortVersion);
    return release;
}

/// Newest first. Of one version, trees come before packages, because readers take the first item of
/// equal versions.
bool comesFirst(const Release& one, const Release& other) {
    const FeedItem& left = one.item;
    const FeedItem& right = other.item;
    const auto order = updater::compareVersions(left.version, right.version);
    if (order != 0)
        return order > 0;
    const bool leftIsPackage = left.fileName.ends_with(".deb");
    const bool rightIsPackage = right.fileName.ends_with(".deb");
    return leftIsPackage != rightIsPackage ? rightIsPackage : left.fileName < right.fileName;
}

ReleaseKeys loadKeys(const Arguments& arguments) {
    ReleaseKeys keys{loadKey(arguments)};
    if (arguments.nextKey.empty())
        return keys;
    keys.next = SigningKey::load(arguments.nextKey);
    if (keys.next->publicKey() == keys.current.publicKey())
        throw UsageError("--next-key names the present key. Make another one with keygen.");
    return keys;
}

std::vector<std::string> signaturesFor(const std::string& feed, const ReleaseKeys& keys) {
    std::vector<std::string> signatures{base64Encode(keys.current.sign(bytesOf(feed)))};
    if (keys.next)
        signatures.push_back(base64Encode(keys.next->sign(bytesOf(feed))));
    return signatures;
}

void generate(const Arguments& arguments, std::ostream& output, std::ostream& remarks) {
    const fs::path& folder = arguments.files.front();
    std::error_code failure;
    if (!fs::is_directory(folder, failure))
        throw Failure("There is no folder \"" + folder.string() + "\".");
    const ReleaseKeys keys = loadKeys(arguments);
    std::vector<Release> releases;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.is_regular_file() && isPackageName(entry.path()))
            releases.push_back(readRelease(entry.path(), arguments));
    }
    if (releases.empty())
        throw Failure("There are no packages (kelo-VERSION.tar.zst, kelo-VERSION.deb) in \"" +
                      folder.string() + "\".");
    std::ranges::sort(releases, comesFirst);

    const std::string old = readText(folder / feedName).value_or("");
    const auto oldItems = packagesIn(old);
    signReleases(releases, keys, oldItems, arguments.replace);
    std::vector<FeedItem> items;
    for (const auto& release : releases)
        items.push_back(release.item);
    for (const auto& name : droppedFiles(items, oldItems))
        remarks << name << " is no longer in the folder, so the feed leaves it out.\n";
    for (const auto& remark : remarksOn(releases, oldItems, keys))
        remarks << remark << "\n";
    std::string feed = writeFeed(
        items, old, std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
    requireReadable(items, feed);
    feed += updater::signatureLines(feed.size(), signaturesFor(feed, keys));
    replaceFile(folder / feedName, feed);
    for (const auto& item : items)
        output << item.fileName << ": version " << item.shortVersion << " (" << item.version
               << ")\n";
}

std::string publicKeyFor(const Arguments& arguments, const fs::path& archive,
                         std::ostream& remarks) {
    if (!arguments.publicKey.empty())
        return arguments.publicKey;
    if (!arguments.key.empty())
        return base64Encode(loadKey(arguments).publicKey());
    const Package package = readPackage(archive);
    if (package.publicKey.empty())
        throw UsageError("\"" + archive.string() +
                         "\" names no public key. Name one with --public-key.");
    remarks << "Verified with the public key that the package itself was built with.\n";
    return package.publicKey;
}

const updater::AppcastItem& itemOf(const updater::Appcast& appcast, const std::string& fileName) {
    const auto found = std::ranges::find_if(appcast.items, [&](const updater::AppcastItem& item) {
        const std::string path = item.enclosure ? item.enclosure->url.path() : std::string();
        return path.substr(path.rfind('/') + 1) == fileName;
    });
    if (found == appcast.items.end())
        throw Failure("The feed has no item for \"" + fileName + "\".");
    return *found;
}

updater::Appcast readFeed(const fs::path& path, ByteView bytes, std::ostream& remarks) {
    try {
        updater::Appcast appcast = updater::parseAppcast(bytes);
        for (const auto& problem : appcast.problems)
            remarks << "Left out: " << problem << "\n";
        return appcast;
    } catch (const updater::UpdateError& error) {
        throw Failure("\"" + path.string() +
                      "\" is not a feed that Kelo can read: " + error.localizedDescription());
    }
}

/// The part of the feed that is read, which is the signed one if it is signed.
ByteView checkedFeed(const MappedFile& feed, const updater::PublicKey& key) {
    const auto found = updater::signaturesOf(feed.bytes());
    const auto isValid = [&](const updater::Signature& signature) {
        return updater::verifies(key, signature, found->signedPart);
    };
    if (found && std::ranges::any_of(found->signatures, isValid))
        return found->signedPart;
    if (found)
        throw Failure("The feed's signature is not valid: Kelo would refuse it. Run kelo-appcast "
                      "generate again, with the right key.");
    return feed.bytes();
}

void verify(const Arguments& arguments, std::ostream& output, std::ostream& remarks) {
    const fs::path& archive = arguments.files[1];
    const auto key = updater::parsePublicKey(publicKeyFor(arguments, archive, remarks));
    if (!key)
        throw Failure("The public key is not valid. Use the 44 characters that keygen printed.");
    const MappedFile feed(arguments.files[0]);
    const updater::Appcast appcast = readFeed(arguments.files[0], checkedFeed(feed, *key), remarks);
    const std::string name = archive.filename();
    const updater::AppcastItem& item = itemOf(appcast, name);
    const auto signature = updater::parseSignature(item.enclosure->signature.value_or(""));
    if (!signature)
        throw Failure("The feed has no signature for \"" + archive.string() +
                      "\". Run kelo-appcast generate again.");
    const MappedFile file(archive);
    if (item.enclosure->length && *item.enclosure->length != file.bytes().size())
        throw Failure("\"" + archive.string() + "\" has " + std::to_string(file.bytes().size()) +
                      " bytes, and the feed says " + std::to_string(*item.enclosure->length) +
                      ". Run kelo-appcast generate again.");
    if (!updater::verifies(*key, *signature, file.bytes()))
        throw Failure(
            "The signature of \"" + archive.string() +
            "\" is not valid: Kelo would refuse it. Run kelo-appcast generate again, with "
            "the right key.");
    if (!updater::signaturesOf(feed.bytes()) && readPackage(archive).requiresSignedFeed)
        throw Failure("The feed is not signed, or was changed by hand since, and this release was "
                      "built to take no such feed (KELO_UPDATE_SIGNED_FEED). Run kelo-appcast "
                      "generate again.");
    output << archive.filename().string() << ": version " << item.displayVersion() << " ("
           << item.version << "), the signature is valid.\n";
}

} // namespace

void run(const Arguments& arguments, std::ostream& output, std::ostream& remarks) {
    switch (arguments.command) {
    case Command::help:
        output << helpText();
        break;
    case Command::keygen:
        makeKey(arguments, output, remarks);
        break;
    case Command::sign:
        signFile(arguments, output);
        break;
    case Command::generate:
        generate(arguments, output, remarks);
        break;
    case Command::verify:
        verify(arguments, output, remarks);
        break;
    }
}

} // namespace kelo::publisher
