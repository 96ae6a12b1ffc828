#include "publisher/Package.h"

#include "publisher/Failure.h"

#include "bundle/InformationFile.h"
#include "updater/install/ArchivePath.h"
#include "updater/install/ArchiveSource.h"

#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace kelo::publisher {

namespace {

constexpr std::array<std::string_view, 4> endings{".tar.zst", ".tar.xz", ".tar.gz", ".deb"};

Failure unreadable(archive* reader, const std::filesystem::path& path) {
    const char* const reason = archive_error_string(reader);
    return Failure("\"" + path.string() +
                   "\" cannot be read as a package: " + (reason ? reason : "it is damaged") + ".");
}

/// The next entry; null at the end. Throws Failure if the archive is damaged.
archive_entry* nextEntry(archive* reader, const std::filesystem::path& path) {
    archive_entry* entry = nullptr;
    const int status = archive_read_next_header(reader, &entry);
    if (status == ARCHIVE_EOF)
        return nullptr;
    if (status != ARCHIVE_OK)
        throw unreadable(reader, path);
    return entry;
}

std::string readBeginning(archive* reader, std::size_t most) {
    std::string content(most, '\0');
    std::size_t length = 0;
    la_ssize_t count = 0;
    while (length < most &&
           (count = archive_read_data(reader, content.data() + length, most - length)) > 0)
        length += static_cast<std::size_t>(count);
    content.resize(length);
    return content;
}

/// The path below the top folder, or below "usr".
std::string insideTree(const char* path) {
    const auto components = updater::archivePath(path ? path : "");
    std::string inside;
    for (std::size_t index = 1; components && index < components->size(); ++index)
        inside += (index == 1 ? "" : "/") + (*components)[index];
    return inside;
}

std::string systemOf(std::string_view program) {
    constexpr std::size_t machineOffset = 18;
    if (!program.starts_with("\177ELF") || program.size() < machineOffset + 2)
        return "linux";
    const auto low = static_cast<unsigned char>(program[machineOffset]);
    const auto high = static_cast<unsigned char>(program[machineOffset + 1]);
    switch (low + 256 * high) {
    case 62:
        return "linux-x86_64";
    case 183:
        return "linux-aarch64";
    default:
        return "linux";
    }
}

struct Findings {
    std::optional<std::string> information;
    std::optional<std::string> program;
};

Findings lookInto(archive* tree, const std::filesystem::path& path) {
    Findings found;
    while (archive_entry* const entry = nextEntry(tree, path)) {
        const std::string inside = insideTree(archive_entry_pathname(entry));
        if (inside == "share/kelo/Info.plist")
            found.information = readBeginning(tree, bundle::longestInformationFile);
        else if (inside == "bin/kelo")
            found.program = readBeginning(tree, 64);
    }
    return found;
}

/// Throws Failure unless the archive could be opened.
void requireOpen(int status, archive* reader, const std::filesystem::path& path) {
    if (status != ARCHIVE_OK)
        throw unreadable(reader, path);
}

Findings lookIntoPackage(archive* outer, const std::filesystem::path& path) {
    while (archive_entry* const entry = nextEntry(outer, path)) {
        const char* const name = archive_entry_pathname(entry);
        if (!std::string_view(name ? name : "").starts_with("data.tar"))
            continue;
        updater::MemberSource member{outer};
        const updater::ArchivePointer tree = updater::makeTarReader();
        requireOpen(
            archive_read_open(tree.get(), &member, nullptr, &updater::MemberSource::read, nullptr),
            tree.get(), path);
        return lookInto(tree.get(), path);
    }
    return {};
}

Findings lookInto(const std::filesystem::path& path) {
    const bool isDebian = path.extension() == ".deb";
    const updater::ArchivePointer reader =
        isDebian ? updater::makePackageReader() : updater::makeTarReader();
    requireOpen(archive_read_open_filename(reader.get(), path.c_str(), 65536), reader.get(), path);
    return isDebian ? lookIntoPackage(reader.get(), path) : lookInto(reader.get(), path);
}

} // namespace

bool isPackageName(const std::filesystem::path& name) {
    const std::string text = name.filename();
    return !text.starts_with('.') &&
           std::ranges::any_of(endings, [&](auto ending) { return text.ends_with(ending); });
}

std::string packageStem(const std::filesystem::path& name) {
    std::string text = name.filename();
    for (const auto ending : endings) {
        if (text.ends_with(ending))
            return text.substr(0, text.size() - ending.size());
    }
    return text;
}

Package readPackage(const std::filesystem::path& path) {
    const Findings found = lookInto(path);
    if (!found.information || !found.program)
        throw Failure("\"" + path.string() +
                      "\" is not a package of Kelo: it lacks bin/kelo or share/kelo/Info.plist.");
    const auto information = bundle::parseInformation(*found.information);
    if (!information)
        throw Failure("The Info.plist in \"" + path.string() +
                      "\" is damaged. Pack the release again.");
    const auto text = [&](std::string_view key) {
        return platform::informationValue<std::string>(*information, key).value_or("");
    };
    Package package{
        text("CFBundleVersion"),
        text("CFBundleShortVersionString"),
        text("SUFeedURL"),
        text("SUPublicEDKey"),
        systemOf(*found.program),
        text("LSMinimumSystemVersion"),
        platform::informationValue<bool>(*information, "SURequireSignedFeed").value_or(false)};
    if (package.version.empty())
        throw Failure("The Info.plist in \"" + path.string() +
                      "\" names no CFBundleVersion. Pack the release again.");
    return package;
}

} // namespace kelo::publisher
