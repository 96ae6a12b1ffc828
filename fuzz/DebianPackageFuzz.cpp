#include "FuzzInput.h"
#include "TarWriter.h"
#include "base/Text.h"
#include "posix/FileDescriptor.h"
#include "updater/error/UpdateError.h"
#include "updater/install/DebianPackage.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

// A package from anybody, of which the updater wants to know what it is. An input that begins with
// the line "text" describes one; any other is a package. Each line of a description that begins
// with "m" is a member of the package, the lines after it are the entries of that member as
// TarWriter.h has them. "|" stands for a line break in a file.

using namespace kelo;
using fuzz::require;

namespace {

constexpr std::string_view informationPath = "usr/share/kelo/Info.plist";

struct Member {
    std::string_view name;
    std::string entries;
};

std::vector<Member> membersOf(std::string_view description) {
    std::vector<Member> members;
    fuzz::FuzzInput input(description);
    while (!input.isEmpty()) {
        const std::string_view line = input.takeLine();
        if (line.starts_with("m "))
            members.push_back({line.substr(2), ""});
        else if (!members.empty())
            members.back().entries.append(line).append("\n");
    }
    return members;
}

void append(std::string& package, const Member& member) {
    std::string content = fuzz::tarOf(member.entries);
    std::ranges::replace(content, '|', '\n');
    content = fuzz::withChecksums(content);
    char header[61];
    std::snprintf(header, sizeof header, "%-16.16s%-12d%-6d%-6d%-8s%-10zu`\n",
                  std::string(member.name).c_str(), 0, 0, 0, "100644", content.size());
    package += header + content;
}

std::string packageOf(const std::vector<Member>& members) {
    std::string package = "!<arch>\n";
    for (const Member& member : members)
        append(package, member);
    return package;
}

/// How often the member's entries name the file, and the content of the first one.
struct Occurrences {
    int count = 0;
    std::string content;
};

Occurrences occurrences(const Member& member, std::string_view path) {
    Occurrences found;
    fuzz::FuzzInput input(member.entries);
    while (!input.isEmpty()) {
        fuzz::FuzzInput line(input.takeLine());
        line.takeUntil(' ');
        line.takeUntil(' ');
        std::string_view name = line.takeUntil('>');
        if (name.starts_with("./"))
            name.remove_prefix(2);
        if (name == path && ++found.count == 1)
            found.content = line.rest();
    }
    return found;
}

/// Other kinds of entries rename the one that follows, and so do members with other names.
bool isPlain(const Member& member) {
    constexpr std::size_t longestName = 99;
    if (member.name.starts_with('/') || member.name.starts_with('#'))
        return false;
    fuzz::FuzzInput input(member.entries);
    while (!input.isEmpty()) {
        const std::string_view line = input.takeLine();
        const bool isFile = line.starts_with("f 644 ") || line.starts_with("f 755 ");
        if (!isFile || line.find('\0') != std::string_view::npos || line.find('>') > longestName)
            return false;
    }
    return true;
}

const Member* firstOf(const std::vector<Member>& members, std::string_view start) {
    const auto found = std::ranges::find_if(
        members, [&](const Member& member) { return member.name.starts_with(start); });
    return found == members.end() ? nullptr : &*found;
}

/// Of a package that the updater could read: it has each of the two files once, in the members that
/// the package manager takes them from.
void examine(const std::vector<Member>& members, const updater::DebianPackage& package) {
    const Member* const control = firstOf(members, "control.tar");
    const Member* const data = firstOf(members, "data.tar");
    if (!std::ranges::all_of(members, isPlain))
        return;
    require(control && data);
    const auto described = occurrences(*control, "control");
    require(described.count == 1 && occurrences(*data, informationPath).count == 1);
    for (const std::string& value : {package.name, package.architecture})
        require(value.empty() || described.content.find(value) != std::string::npos);
}

void examine(const updater::DebianPackage& package) {
    for (const std::string& value : {package.name, package.architecture})
        require(value.find('\n') == std::string::npos && value == trimmed(value));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const posix::FileDescriptor file(::memfd_create("package", MFD_CLOEXEC));
    constexpr std::string_view textMark = "text\n";
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const bool isText = bytes.starts_with(textMark);
    const auto members = isText ? membersOf(bytes.substr(textMark.size())) : std::vector<Member>();
    const std::string package = isText ? packageOf(members) : std::string(bytes);
    require(::ftruncate(file.get(), 0) == 0);
    require(::pwrite(file.get(), package.data(), package.size(), 0) == std::ssize(package));
    try {
        const auto found = updater::readDebianPackage(file.get());
        examine(found);
        if (isText)
            examine(members, found);
    } catch (const updater::UpdateError& refused) {
        require(refused.kind() == updater::UpdateErrorKind::installing);
    }
    return 0;
}
