#include "component/installer/Trees.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace kelo::tests {

namespace fs = std::filesystem;

namespace {

struct ArchiveDeleter {
    void operator()(archive* writer) const { archive_write_free(writer); }
};
struct EntryDeleter {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
struct PipeCloser {
    void operator()(FILE* pipe) const { ::pclose(pipe); }
};

/// In memory, if programs can be run from there, because these tests sync thousands of files.
fs::path fastPlace() {
    const fs::path memory = "/dev/shm";
    struct statvfs status {};
    const bool usable = ::statvfs(memory.c_str(), &status) == 0 &&
                        (status.f_flag & ST_NOEXEC) == 0 && ::access(memory.c_str(), W_OK) == 0;
    return usable ? memory : fs::temp_directory_path();
}

void check(archive* writer, int status) {
    if (status != ARCHIVE_OK)
        throw std::runtime_error(archive_error_string(writer));
}

void addEntry(archive* writer, const TarEntry& description) {
    const std::unique_ptr<archive_entry, EntryDeleter> entry(archive_entry_new());
    archive_entry_set_pathname(entry.get(), description.path.c_str());
    archive_entry_set_filetype(entry.get(), description.type);
    archive_entry_set_perm(entry.get(), description.permissions);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(description.content.size()));
    if (!description.symbolicLink.empty())
        archive_entry_set_symlink(entry.get(), description.symbolicLink.c_str());
    if (!description.hardLink.empty())
        archive_entry_set_hardlink(entry.get(), description.hardLink.c_str());
    check(writer, archive_write_header(writer, entry.get()));
    archive_write_data(writer, description.content.data(), description.content.size());
}

} // namespace

TreeFolder::TreeFolder() : TemporaryFolder(fastPlace()) {}

void writeFile(const fs::path& path, const std::string& content, mode_t mode) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << content;
    ::chmod(path.c_str(), mode);
}

std::string readFile(const fs::path& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

Contents contentsOf(const fs::path& folder) {
    Contents contents;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_directory())
            contents[fs::relative(entry.path(), folder)] = readFile(entry.path());
    }
    return contents;
}

std::string information(const std::string& version) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
           "<key>CFBundleShortVersionString</key><string>" +
           version + "</string><key>CFBundleVersion</key><string>" + version +
           "</string></dict></plist>\n";
}

void writeTree(const fs::path& root, const std::string& version) {
    const std::string kind = version == "1.0" ? "first" : "later";
    writeFile(root / "bin/kelo", "#!/bin/sh\necho " + version + "\n", 0755);
    writeFile(root / "bin/kelo-appcast", "#!/bin/sh\necho " + version + "\n", 0755);
    writeFile(root / "bin" / (kind + "-tool"), version, 0755);
    writeFile(root / "libexec/kelo/kelo", "#!/bin/sh\necho " + version + "\n", 0755);
    writeFile(root / "libexec/kelo/kelo-verify-user", version, 0755);
    writeFile(root / kind / "only.txt", version);
    writeFile(root / "share/doc" / (kind + ".txt"), version);
    writeFile(root / "share/kelo/Info.plist", information(version));
    writeFile(root / "share/kelo/files.txt", "share/kelo/files.txt\n");
    std::string list;
    for (const auto& [path, content] : contentsOf(root))
        list += path + "\n";
    writeFile(root / "share/kelo/files.txt", list);
}

void writeArchive(const fs::path& path, const std::vector<TarEntry>& entries) {
    const std::unique_ptr<archive, ArchiveDeleter> writer(archive_write_new());
    check(writer.get(), archive_write_set_format_pax_restricted(writer.get()));
    const std::string kind = path.extension();
    if (kind == ".zst")
        check(writer.get(), archive_write_add_filter_zstd(writer.get()));
    else if (kind == ".xz")
        check(writer.get(), archive_write_add_filter_xz(writer.get()));
    else
        check(writer.get(), archive_write_add_filter_gzip(writer.get()));
    check(writer.get(), archive_write_open_filename(writer.get(), path.c_str()));
    for (const auto& entry : entries)
        addEntry(writer.get(), entry);
    check(writer.get(), archive_write_close(writer.get()));
}

void packTree(const fs::path& root, const std::string& top, const fs::path& archive) {
    std::vector<TarEntry> entries;
    for (const auto& [path, content] : contentsOf(root)) {
        const bool runs =
            (fs::status(root / path).permissions() & fs::perms::owner_exec) != fs::perms::none;
        entries.push_back({.path = top + "/" + path,
                           .permissions = static_cast<mode_t>(runs ? 0755 : 0644),
                           .content = content});
    }
    writeArchive(archive, entries);
}

void writePackage(const fs::path& path, const PackageDescription& description) {
    const std::string control = "Package: " + description.name + "\nVersion: 1\n" +
                                "Architecture: " + description.architecture +
                                "\nDescription: Kelo\n Package: another\n";
    std::vector<TarEntry> files{
        {.path = "./usr/bin/kelo", .content = "a program"},
        {.path = "./usr/share/kelo/Info.plist", .content = information(description.version)}};
    files.insert(files.end(), description.more.begin(), description.more.end());
    writeMembers(path, {{"control.tar.xz", {{.path = "./control", .content = control}}},
                        {"data.tar.zst", files}});
}

void writeMembers(const fs::path& path, const std::vector<PackageMember>& members) {
    const std::unique_ptr<archive, ArchiveDeleter> writer(archive_write_new());
    check(writer.get(), archive_write_set_format_ar_svr4(writer.get()));
    check(writer.get(), archive_write_open_filename(writer.get(), path.c_str()));
    addEntry(writer.get(), {.path = "debian-binary", .content = "2.0\n"});
    for (const auto& member : members) {
        const fs::path packed = path.string() + "." + member.name;
        writeArchive(packed, member.entries);
        addEntry(writer.get(), {.path = member.name, .content = readFile(packed)});
        fs::remove(packed);
    }
    check(writer.get(), archive_write_close(writer.get()));
}

posix::FileDescriptor openForReading(const fs::path& path) {
    return posix::FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

std::string outputOf(const fs::path& program) {
    std::unique_ptr<FILE, PipeCloser> pipe(::popen(("'" + program.string() + "'").c_str(), "re"));
    std::string output;
    std::array<char, 256> buffer{};
    while (pipe && std::fgets(buffer.data(), buffer.size(), pipe.get()))
        output += buffer.data();
    return ::pclose(pipe.release()) == 0 ? output : std::string();
}

} // namespace kelo::tests
