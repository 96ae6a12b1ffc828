#include "base/Utf8.h"

namespace kelo {

namespace {

bool within(std::string_view text, std::size_t at, unsigned char low, unsigned char high) {
    return at < text.size() && static_cast<unsigned char>(text[at]) >= low &&
           static_cast<unsigned char>(text[at]) <= high;
}

} // namespace

Utf8Sequence utf8SequenceAt(std::string_view text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    if (lead < 0x80)
        return {1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {1, false};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The range of the second byte excludes overlong forms, surrogates and values above the limit.
    const unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (!within(text, at + 1, low, high))
        return {1, false};
    for (std::size_t i = 2; i < length; ++i)
        if (!within(text, at + i, 0x80, 0xBF))
            return {i, false};
    return {length, true};
}

bool isWellFormedUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Sequence sequence = utf8SequenceAt(text, at);
        if (!sequence.wellFormed)
            return false;
        at += sequence.length;
    }
    return true;
}

} // namespace kelo
