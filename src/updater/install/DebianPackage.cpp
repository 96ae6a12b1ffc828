#include "updater/install/DebianPackage.h"

#include "bundle/InformationFile.h"
#include "updater/files/InstallFailure.h"
#include "updater/install/ArchiveSource.h"

#include <archive_entry.h>

#include <cstddef>
#include <optional>
#include <sstream>
#include <string_view>

namespace kelo::updater {

namespace {

constexpr std::size_t mostEntries = 20000;
constexpr std::size_t longestControl = std::size_t(256) * 1024;

[[noreturn]] void refuse(archive* reader) {
    const char* const reason = archive_error_string(reader);
    throw unfitArchive(reason ? reason : "cannot be read");
}

/// The next entry; null at the end.
archive_entry* nextEntry(archive* reader) {
    archive_entry* entry = nullptr;
    const int status = archive_read_next_header(reader, &entry);
    if (status != ARCHIVE_OK && status != ARCHIVE_EOF)
        refuse(reader);
    return status == ARCHIVE_EOF ? nullptr : entry;
}

std::string nameOf(archive_entry* entry) {
    const char* const name = archive_entry_pathname(entry);
    return name ? name : "";
}

std::string contentOf(archive* reader, std::size_t longest) {
    std::string content(longest + 1, '\0');
    std::size_t length = 0;
    la_ssize_t count = 0;
    while (length < content.size() && (count = archive_read_data(reader, content.data() + length,
                                                                 content.size() - length)) > 0)
        length += static_cast<std::size_t>(count);
    if (count < 0)
        refuse(reader);
    if (length > longest)
        throw unfitArchive("a description in it is too long");
    content.resize(length);
    return content;
}

/// The file's content in the archive inside. Reads that to its end: of two files with one name, the
/// package manager would take the second.
std::string fileInside(archive* package, std::string_view file, std::size_t longest) {
    MemberSource member{package};
    const ArchivePointer reader = makeTarReader();
    if (archive_read_open(reader.get(), &member, nullptr, &MemberSource::read, nullptr) !=
        ARCHIVE_OK)
        refuse(reader.get());
    std::optional<std::string> found;
    std::size_t entries = 0;
    while (archive_entry* const entry = nextEntry(reader.get())) {
        if (++entries > mostEntries)
            throw unfitArchive("more than " + std::to_string(mostEntries) + " entries");
        std::string name = nameOf(entry);
        if (name.starts_with("./"))
            name.erase(0, 2);
        if (name != file)
            continue;
        if (found || archive_entry_filetype(entry) != AE_IFREG || archive_entry_hardlink(entry))
            throw unfitArchive("not exactly one file " + name);
        found = contentOf(reader.get(), longest);
    }
    if (!found)
        throw unfitArchive("it has no " + std::string(file));
    return *found;
}

/// The field's value in the control file's only paragraph; empty without it.
std::string field(const std::string& control, std::string_view name) {
    std::istringstream lines(control);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(name) || line.substr(name.size(), 1) != ":")
            continue;
        const auto start = line.find_first_not_of(" \t", name.size() + 1);
        return start == std::string::npos
                   ? ""
                   : line.substr(start, line.find_last_not_of(" \t\r") + 1 - start);
    }
    return "";
}

std::string versionIn(const std::string& information) {
    const auto dictionary = bundle::parseInformation(information);
    const auto version =
        dictionary ? platform::informationValue<std::string>(*dictionary, "CFBundleVersion")
                   : std::nullopt;
    if (!version)
        throw unfitArchive("its information dictionary names no version");
    return *version;
}

} // namespace

DebianPackage readDebianPackage(int package) {
    ArchiveSource source{package};
    const ArchivePointer reader = makePackageReader();
    if (archive_read_open(reader.get(), &source, nullptr, &ArchiveSource::read, nullptr) !=
        ARCHIVE_OK)
        refuse(reader.get());
    std::optional<std::string> control;
    std::optional<std::string> information;
    std::size_t members = 0;
    while (archive_entry* const entry = nextEntry(reader.get())) {
        const std::string name = nameOf(entry);
        // The package manager takes the first member of each kind.
        if (name.starts_with("control.tar") && !control)
            control = fileInside(reader.get(), "control", longestControl);
        else if (name.starts_with("data.tar") && !information)
            information = fileInside(reader.get(), "usr/share/kelo/Info.plist",
                                     bundle::longestInformationFile);
        if (++members > mostEntries)
            throw unfitArchive("more than " + std::to_string(mostEntries) + " members");
    }
    if (!control || !information)
        throw unfitArchive("it lacks its control file or its content");
    return {field(*control, "Package"), field(*control, "Architecture"), versionIn(*information)};
}

} // namespace kelo::updater
