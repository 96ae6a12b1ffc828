#include "testing/rig/ProcessMemory.h"

#include "base/SecretText.h"
#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

namespace kelo::rig {

namespace {

constexpr char disguise = 0x55;
constexpr std::size_t surroundings = 48;

struct Mapping {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    std::string name;
};

std::vector<Mapping> writableMappings(pid_t process) {
    std::vector<Mapping> mappings;
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream words(line);
        Mapping mapping;
        char dash = 0;
        std::string rights;
        std::string rest;
        words >> std::hex >> mapping.begin >> dash >> mapping.end >> rights;
        std::getline(words, rest);
        if (!rights.starts_with("rw"))
            continue;
        mapping.name = rest.substr(std::min(rest.size(), rest.rfind(' ') + 1));
        mappings.push_back(std::move(mapping));
    }
    return mappings;
}

std::string printable(const char* begin, const char* end) {
    std::string result(begin, end);
    std::ranges::replace_if(
        result, [](unsigned char c) { return c < 0x20 || c >= 0x7F; }, '.');
    return result;
}

class MemoryReader {
public:
    explicit MemoryReader(pid_t process)
        : process(process),
          pages(::open(("/proc/" + std::to_string(process) + "/pagemap").c_str(),
                       O_RDONLY | O_CLOEXEC)) {}

    /// Whether any of these bytes was ever written, as far as the kernel says so. A web engine
    /// reserves many gigabytes.
    bool mayBeUsed(std::uintptr_t begin, std::size_t size) const {
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        std::vector<std::uint64_t> entries(size / page);
        const auto bytes = entries.size() * sizeof(std::uint64_t);
        const auto place = static_cast<off_t>(begin / page * sizeof(std::uint64_t));
        if (::pread(pages.get(), entries.data(), bytes, place) != static_cast<ssize_t>(bytes))
            return true;
        constexpr std::uint64_t presentOrSwapped = std::uint64_t{3} << 62;
        return std::ranges::any_of(entries, [](auto entry) { return entry & presentOrSwapped; });
    }
    /// As much of it as there is. A process that protects its memory may still read its own so.
    std::string read(std::uintptr_t begin, std::size_t size) const {
        std::string bytes(size, '\0');
        const iovec here{bytes.data(), size};
        const iovec there{reinterpret_cast<void*>(begin), size};
        const auto count = ::process_vm_readv(process, &here, 1, &there, 1, 0);
        if (count < 0 && errno == EPERM)
            throw std::runtime_error("the memory of process " + std::to_string(process) +
                                     " may not be read");
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

private:
    const pid_t process;
    const posix::FileDescriptor pages;
};

/// What is around the text, without the text itself, which would then stand in this process.
std::string around(const std::string& bytes, std::size_t at, std::size_t size) {
    const char* const place = bytes.data() + at;
    const char* const begin = place - std::min(surroundings, at);
    const char* const behind = place + size;
    const char* const end = behind + std::min(surroundings, bytes.size() - at - size);
    return printable(begin, place) + "[...]" + printable(behind, end);
}

void search(const MemoryReader& reader, const Mapping& mapping, const DisguisedText& text,
            std::vector<std::string>& found) {
    constexpr std::size_t portion = std::size_t{1} << 20;
    for (auto begin = mapping.begin; begin < mapping.end; begin += portion) {
        const auto size = std::min<std::size_t>(portion, mapping.end - begin);
        if (!reader.mayBeUsed(begin, size))
            continue;
        // A text may lie across two portions.
        std::string bytes =
            reader.read(begin, std::min<std::size_t>(size + text.size() - 1, mapping.end - begin));
        for (std::size_t at = bytes.find(text.at(0)); at < size && at + text.size() <= bytes.size();
             at = bytes.find(text.at(0), at + 1)) {
            if (!text.standsAt(bytes.data() + at))
                continue;
            std::ostringstream where;
            where << std::hex << begin + at << ' ' << mapping.name << ": "
                  << around(bytes, at, text.size());
            found.push_back(where.str());
        }
        wipe(bytes);
    }
}

} // namespace

DisguisedText DisguisedText::random(std::size_t length) {
    std::random_device source;
    DisguisedText text;
    for (std::size_t index = 0; index < length; ++index)
        text.disguised += static_cast<char>(('a' + source() % 26) ^ disguise);
    return text;
}

DisguisedText DisguisedText::of(std::string_view text) {
    DisguisedText result;
    for (const char character : text)
        result.disguised += static_cast<char>(character ^ disguise);
    return result;
}

std::string DisguisedText::plain() const {
    std::string result;
    for (std::size_t index = 0; index < size(); ++index)
        result += at(index);
    return result;
}

char DisguisedText::at(std::size_t index) const {
    return static_cast<char>(disguised.at(index) ^ disguise);
}

bool DisguisedText::standsAt(const char* place) const {
    for (std::size_t index = 0; index < disguised.size(); ++index)
        if (static_cast<char>(place[index] ^ disguise) != disguised[index])
            return false;
    return true;
}

std::vector<std::string> findInMemory(pid_t process, const DisguisedText& text) {
    const MemoryReader reader(process);
    std::vector<std::string> found;
    for (const auto& mapping : writableMappings(process))
        search(reader, mapping, text, found);
    return found;
}

} // namespace kelo::rig
