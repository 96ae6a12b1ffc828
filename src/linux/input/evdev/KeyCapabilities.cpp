#include "linux/input/evdev/KeyCapabilities.h"

#include "linux/input/evdev/HeldKeys.h"

#include <algorithm>
#include <fstream>
#include <vector>

namespace kelo::input {

bool lacksHeldKeys(const std::filesystem::path& descriptions, const std::string& device) {
    // One bit per key, in hexadecimal words of the size of a long, highest word first.
    std::ifstream file(descriptions / device / "device" / "capabilities" / "key");
    file >> std::hex;
    std::vector<unsigned long> words;
    for (unsigned long word = 0; file >> word;)
        words.push_back(word);
    if (words.empty() || !file.eof())
        return false;
    std::ranges::reverse(words);
    return std::ranges::none_of(HeldKeys::codes, [&](unsigned code) {
        constexpr unsigned wordBits = 8 * sizeof(unsigned long);
        const std::size_t word = code / wordBits;
        return word < words.size() && (words[word] >> (code % wordBits) & 1) != 0;
    });
}

} // namespace kelo::input
