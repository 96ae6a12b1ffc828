#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace kelo::platform {

/// A value of an information dictionary, as far as anybody reads it: lists, data and the like are
/// std::monostate.
using InformationValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

using InformationDictionary = std::map<std::string, InformationValue, std::less<>>;

/// What was installed with the program. Main thread only.
class Bundle {
public:
    virtual ~Bundle() = default;
    /// Read anew at each call; nothing when there is none that can be read.
    virtual std::optional<InformationDictionary> infoDictionary() = 0;
};

} // namespace kelo::platform
