#include "FuzzInput.h"
#include "base/Utf8.h"
#include "bundle/InformationFile.h"

#include <plist/plist.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>

// The dictionary that the installed program says of itself, in either form.

using namespace kelo;
using fuzz::require;
using platform::InformationDictionary;

namespace {

plist_t nodeOf(const platform::InformationValue& value) {
    if (const auto* truth = std::get_if<bool>(&value))
        return plist_new_bool(*truth);
    if (const auto* number = std::get_if<std::int64_t>(&value))
        return plist_new_uint(static_cast<std::uint64_t>(*number));
    if (const auto* real = std::get_if<double>(&value))
        return plist_new_real(*real);
    if (const auto* text = std::get_if<std::string>(&value))
        return plist_new_string(text->c_str());
    return plist_new_array();
}

/// The same dictionary, written by the library in the binary form.
std::string written(const InformationDictionary& information) {
    const plist_t root = plist_new_dict();
    for (const auto& [key, value] : information)
        plist_dict_set_item(root, key.c_str(), nodeOf(value));
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    plist_free(root);
    std::string result(bytes, length);
    std::free(bytes);
    return result;
}

/// Equal, where a value that is no number is the same as itself.
bool areTheSame(const InformationDictionary& one, const InformationDictionary& other) {
    const auto same = [](const auto& left, const auto& right) {
        const auto* real = std::get_if<double>(&left.second);
        const auto* otherReal = std::get_if<double>(&right.second);
        if (real && otherReal && std::isnan(*real))
            return left.first == right.first && std::isnan(*otherReal);
        return left == right;
    };
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), same);
}

void examine(const InformationDictionary& information) {
    for (const auto& [key, value] : information) {
        const auto* const text = std::get_if<std::string>(&value);
        const auto found = platform::informationValue<std::string>(information, key);
        require(found.has_value() == (text != nullptr) && (!text || *found == *text));
        require(key.find('\0') == std::string::npos && isWellFormedUtf8(key));
        require(!text || (text->find('\0') == std::string::npos && isWellFormedUtf8(*text)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto information = bundle::parseInformation(bytes);
    if (!information)
        return 0;
    examine(*information);
    const auto again = bundle::parseInformation(written(*information));
    require(again && areTheSame(*again, *information));
    return 0;
}
