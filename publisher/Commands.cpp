#include "publisher/Commands.h"

#include "base/Base64.h"
#include "publisher/Failure.h"
#include "publisher/Feed.h"
#include "publisher/Files.h"
#include "publisher/Package.h"
#include "publisher/SigningKey.h"

#include "updater/appcast/Appcast.h"
#include "updater/appcast/Version.h"
#include "updater/archive/Signature.h"
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

FeedItem itemFor(const fs::path& path, const Arguments& arguments, const SigningKey& key) {
    const Package package = readPackage(path);
    const std::string publicKey = base64Encode(key.publicKey());
    if (!package.publicKey.empty() && package.publicKey != publicKey)
        throw Failure("\"" + path.string() +
                      "\" was built with another public key (KELO_UPDATE_PUBLIC_KEY). Once "
                      "installed, it would refuse updates that are signed with this key.");
    const MappedFile file(path);
    FeedItem item;
    item.version = package.version;
    item.shortVersion = package.shortVersion.empty() ? package.version : package.shortVersion;
    item.system = package.system;
    item.minimumSystem = package.minimumSystem;
    item.fileName = path.filename();
    item.url = downloadUrl(arguments, package, path) + item.fileName;
    item.pageUrl = arguments.pageUrl;
    item.signature = base64Encode(key.sign(file.bytes()));
    item.length = file.bytes().size();
    item.notes = notesFor(path.parent_path(), packageStem(path));
    // One text serves the packages for several systems, whose names go on after the version.
    if (!item.notes)
        item.notes = notesFor(path.parent_path(), "kelo-" + item.shortVersion);
    return item;
}

/// Newest first. Of one version, trees come before packages, because readers take the first item of
/// equal versions.
bool comesFirst(const FeedItem& left, const FeedItem& right) {
    const auto order = updater::compareVersions(left.version, right.version);
    if (order != 0)
        return order > 0;
    const bool leftIsPackage = left.fileName.ends_with(".deb");
    const bool rightIsPackage = right.fileName.ends_with(".deb");
    return leftIsPackage != rightIsPackage ? rightIsPackage : left.fileName < right.fileName;
}

void generate(const Arguments& arguments, std::ostream& output, std::ostream& remarks) {
    const fs::path& folder = arguments.files.front();
    std::error_code failure;
    if (!fs::is_directory(folder, failure))
        throw Failure("There is no folder \"" + folder.string() + "\".");
    const SigningKey key = loadKey(arguments);
    std::vector<FeedItem> items;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.is_regular_file() && isPackageName(entry.path()))
            items.push_back(itemFor(entry.path(), arguments, key));
    }
    if (items.empty())
        throw Failure("There are no packages (kelo-VERSION.tar.zst, kelo-VERSION.deb) in \"" +
                      folder.string() + "\".");
    std::ranges::sort(items, comesFirst);

    const std::string old = readText(folder / feedName).value_or("");
    for (const auto& name : droppedFiles(items, old))
        remarks << name << " is no longer in the folder, so the feed leaves it out.\n";
    const std::string feed = writeFeed(
        items, old, std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
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

updater::Appcast readFeed(const fs::path& path, std::ostream& remarks) {
    const MappedFile file(path);
    try {
        updater::Appcast appcast = updater::parseAppcast(file.bytes());
        for (const auto& problem : appcast.problems)
            remarks << "Left out: " << problem << "\n";
        return appcast;
    } catch (const updater::UpdateError& error) {
        throw Failure("\"" + path.string() +
                      "\" is not a feed that Kelo can read: " + error.localizedDescription());
    }
}

void verify(const Arguments& arguments, std::ostream& output, std::ostream& remarks) {
    const fs::path& archive = arguments.files[1];
    const updater::Appcast appcast = readFeed(arguments.files[0], remarks);
    const std::string name = archive.filename();
    const updater::AppcastItem& item = itemOf(appcast, name);
    const auto key = updater::parsePublicKey(publicKeyFor(arguments, archive, remarks));
    if (!key)
        throw Failure("The public key is not valid. Use the 44 characters that keygen printed.");
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
