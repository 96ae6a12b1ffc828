#include "base/SecretText.h"

#include <utility>

namespace kelo {

void wipe(void* memory, std::size_t size) {
    volatile auto* byte = static_cast<volatile unsigned char*>(memory);
    while (size-- > 0)
        *byte++ = 0;
}

void wipe(std::string& text) {
    // The whole capacity: a text that was longer before has left its tail behind the end.
    text.resize(text.capacity());
    wipe(text.data(), text.size());
    text.clear();
}

SecretText::SecretText(std::string_view text) : text(text) {}

// Copied, not moved: a short string lives inside the object, and a move would leave it there.
// NOLINTNEXTLINE(performance-move-constructor-init)
SecretText::SecretText(SecretText&& other) noexcept : text(other.text) {
    wipe(other.text);
}

SecretText& SecretText::operator=(SecretText&& other) noexcept {
    if (this != &other) {
        wipe(text);
        text = other.text;
        wipe(other.text);
    }
    return *this;
}

SecretText::~SecretText() {
    wipe(text);
}

} // namespace kelo
