#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::authorization {

// What Kelo and kelo-verify-user say to each other, over the helper's standard input and output.
//
// A message is a type byte, a length (two bytes, big-endian, at most longestPayload) and that many
// bytes. The talk goes strictly by turns:
//
//   Kelo    begin      16 random bytes
//   helper  any number of
//             information | error     a text to show; the helper goes on at once
//             hiddenPrompt | visiblePrompt    a question; the helper waits for
//   Kelo      answer                  the reply, as typed
//   helper      tryAgain              the last try was wrong, another one follows
//   helper  result     one byte (see HelperResult), then the 16 bytes of begin
//
// and the helper ends with exit status 0. Texts are well-formed UTF-8 without control characters
// other than line feed and tab. Whoever sees the rules broken gives up: Kelo takes it as a failed
// verification, the helper ends. Kelo cancels by closing its end.

enum class MessageType : std::uint8_t {
    begin = 'B',
    answer = 'A',
    information = 'I',
    error = 'E',
    hiddenPrompt = 'H',
    visiblePrompt = 'V',
    tryAgain = 'T',
    result = 'R',
};

enum class HelperResult : std::uint8_t {
    verified = '+',
    failed = '-',
    unavailable = '?',
};

struct Message {
    MessageType type;
    std::string payload;
};

inline constexpr std::size_t longestPayload = 4096;

/// Ties a result to the run it belongs to.
using RunMark = std::array<char, 16>;

/// One message as bytes, its payload cut to longestPayload. The bytes of an answer are a secret:
/// wipe them.
std::vector<char> encode(MessageType type, std::string_view payload);

/// A text as the protocol allows it: with "?" for what is not ASCII if it is not UTF-8, without
/// control characters, cut to longestPayload.
std::string presentable(std::string_view text);

/// Splits a stream into messages and checks each by itself: type, length, and text.
class MessageReader {
public:
    MessageReader() = default;
    MessageReader(const MessageReader&) = delete;
    MessageReader& operator=(const MessageReader&) = delete;
    /// What was not taken is wiped: it may be an answer.
    ~MessageReader();

    void feed(std::span<const char> bytes);
    /// The next whole message, if there is one. The caller wipes an answer.
    std::optional<Message> next();
    /// Whether the stream broke the rules; then nothing more comes out of it.
    bool broken() const { return broken_; }
    /// Whether bytes are left that are no whole message.
    bool midMessage() const { return !pending.empty(); }

private:
    std::string pending;
    bool broken_ = false;
};

/// The result message's payload.
std::string encodeResult(HelperResult result, const RunMark& mark);
/// The result in a payload, or nothing when it is malformed or carries another mark.
std::optional<HelperResult> decodeResult(std::string_view payload, const RunMark& mark);

} // namespace kelo::authorization
