#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace kelo::platform {

/// A value of an information dictionary. Kinds that the program does not use, such as lists and
/// data, are std::monostate.
using InformationValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

using InformationDictionary = std::map<std::string, InformationValue, std::less<>>;

/// The files installed with the program. Main thread only.
class Bundle {
public:
    virtual ~Bundle() = default;
    /// Reads the dictionary from its file at each call. Empty if there is none or it is unreadable.
    virtual std::optional<InformationDictionary> infoDictionary() = 0;
};

} // namespace kelo::platform
