#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelo {

/// Overwrites memory in a way that the compiler does not optimise away.
void wipe(void* memory, std::size_t size);

/// Overwrites a text in place, then empties it.
void wipe(std::string& text);

/// A password or code. It can only be moved, and its destructor overwrites its memory.
class SecretText {
public:
    SecretText() = default;
    explicit SecretText(std::string_view text);
    SecretText(SecretText&& other) noexcept;
    SecretText& operator=(SecretText&& other) noexcept;
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;
    ~SecretText();

    std::string_view view() const { return text; }
    bool empty() const { return text.empty(); }

private:
    std::string text;
};

} // namespace kelo
