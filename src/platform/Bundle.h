#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace kelo::platform {

/// A value of an information dictionary. Kinds that the program does not use, such as lists and
/// data, are std::monostate.
using InformationValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

using InformationDictionary = std::map<std::string, InformationValue, std::less<>>;

/// The value of a key; nothing if it is absent or of another kind.
template <typename T>
std::optional<T> informationValue(const InformationDictionary& dictionary, std::string_view key) {
    const auto found = dictionary.find(key);
    const T* const value = found == dictionary.end() ? nullptr : std::get_if<T>(&found->second);
    return value ? std::optional(*value) : std::nullopt;
}

/// The files installed with the program. Main thread only.
class Bundle {
public:
    virtual ~Bundle() = default;
    /// Reads the dictionary from its file at each call. Empty if there is none or it is unreadable.
    virtual std::optional<InformationDictionary> infoDictionary() = 0;
};

/// Version and build of the program, "1.4.2 (57)", with "?" for each that the bundle does not say.
/// Reads the dictionary anew for each of them.
std::string versionString(Bundle& bundle);

} // namespace kelo::platform
