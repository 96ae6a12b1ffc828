#include "bundle/InformationFile.h"

#include "base/Utf8.h"
#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <plist/plist.h>
#include <sys/stat.h>

#include <cstdlib>
#include <memory>
#include <type_traits>

namespace kelo::bundle {

namespace {

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using PlistPointer = std::unique_ptr<std::remove_pointer_t<plist_t>, PlistDeleter>;

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
using CText = std::unique_ptr<char, FreeDeleter>;

bool isPresentable(std::string_view text) {
    return isWellFormedUtf8(text) && text.find('\0') == std::string_view::npos;
}

platform::InformationValue valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }
    case PLIST_UINT: {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return static_cast<std::int64_t>(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING: {
        std::uint64_t length = 0;
        const char* const text = plist_get_string_ptr(node, &length);
        if (const std::string_view whole(text ? text : "", text ? length : 0); isPresentable(whole))
            return std::string(whole);
        return std::monostate();
    }
    default:
        return std::monostate();
    }
}

/// Nothing for a key that is not presentable. The library ends the program when it is asked for a
/// key with a NUL in it, but it can write such a key as XML.
std::optional<std::string> keyOf(plist_t value) {
    const plist_t node = plist_dict_item_get_key(value);
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node, &text, &length);
    const CText xml(text);
    if (!text || !isPresentable({text, length}))
        return std::nullopt;
    char* key = nullptr;
    plist_get_key_val(node, &key);
    const CText owned(key);
    return key ? std::optional<std::string>(key) : std::nullopt;
}

/// The content of a regular file; nothing if it is longer than the limit, in bytes.
std::optional<std::string> readRegularFile(const std::filesystem::path& path, std::size_t limit) {
    // O_NONBLOCK, because opening a pipe that somebody put there would wait for a writer.
    const posix::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return posix::readAll(file.get(), limit);
}

} // namespace

std::optional<platform::InformationDictionary> parseInformation(std::string_view bytes) {
    plist_t parsed = nullptr;
    if (bytes.empty() || bytes.size() > longestInformationFile)
        return std::nullopt;
    // Not plist_from_memory: newer versions of the library also read JSON and a third form with it.
    const auto length = static_cast<std::uint32_t>(bytes.size());
    if (plist_is_binary(bytes.data(), length))
        plist_from_bin(bytes.data(), length, &parsed);
    else
        plist_from_xml(bytes.data(), length, &parsed);
    const PlistPointer root(parsed);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
        return std::nullopt;
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(root.get(), &position);
    const std::unique_ptr<void, FreeDeleter> ownedPosition(position);
    platform::InformationDictionary information;
    while (true) {
        plist_t value = nullptr;
        plist_dict_next_item(root.get(), position, nullptr, &value);
        if (!value)
            return information;
        if (const auto key = keyOf(value))
            information.insert_or_assign(*key, valueOf(value));
    }
}

std::optional<platform::InformationDictionary>
readInformationFile(const std::filesystem::path& path) {
    const auto bytes = readRegularFile(path, longestInformationFile);
    return bytes ? parseInformation(*bytes) : std::nullopt;
}

} // namespace kelo::bundle
