#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace kelo::fuzz {

/// Ends the program if a rule is broken: that is how a fuzz target tells of the input. Says in
/// which line of the target the rule stands.
inline void require(bool held, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (held)
        return;
    std::fprintf(stderr, "%s:%d: this rule is broken.\n", file, line);
    std::abort();
}

/// Takes an input apart, from the front to the back. The input must outlive what is taken.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size)
        : left(reinterpret_cast<const char*>(data), size) {}
    explicit FuzzInput(std::string_view text) : left(text) {}

    bool isEmpty() const { return left.empty(); }

    /// The text up to the separator or the end. The separator is removed as well.
    std::string_view takeUntil(char separator) {
        const auto end = std::min(left.find(separator), left.size());
        const std::string_view taken = left.substr(0, end);
        left.remove_prefix(std::min(end + 1, left.size()));
        return taken;
    }

    std::string_view takeLine() { return takeUntil('\n'); }

    /// One byte; 0 at the end.
    std::uint8_t takeByte() {
        if (left.empty())
            return 0;
        const auto byte = static_cast<std::uint8_t>(left.front());
        left.remove_prefix(1);
        return byte;
    }

    std::string_view rest() const { return left; }

private:
    std::string_view left;
};

} // namespace kelo::fuzz
