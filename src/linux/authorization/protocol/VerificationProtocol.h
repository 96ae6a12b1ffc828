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

// The protocol between Kelo and kelo-verify-user, over the helper's standard input and output.
//
// A message is a type byte, a length (two bytes, big-endian, at most longestPayload) and a payload
// of that length. The two sides take turns:
//
//   Kelo    begin      the nonce of this run, 16 random bytes
//   helper  any number of
//             information | error     a text to show; the helper continues at once
//             hiddenPrompt | visiblePrompt    a question; the helper waits for
//   Kelo      answer                  the text that the user typed
//   helper      tryAgain              the answer was wrong, another try follows
//   helper  result     one byte (see HelperResult), then the nonce
//
// Then the helper exits with status 0. Texts are well-formed UTF-8 without control characters other
// than line feed and tab. After a protocol violation the helper exits, and Kelo treats the
// verification as failed. To cancel, Kelo closes its end.

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
    undecided = '!',   ///< the check itself did not work
    unavailable = '?', ///< there is no PAM service for the check
};

struct Message {
    MessageType type;
    std::string payload;
};

inline constexpr std::size_t longestPayload = 4096;

/// Proves that a result belongs to this run.
using RunNonce = std::array<char, 16>;

/// Encodes a message. Truncates the payload to longestPayload. The bytes of an answer are secret,
/// so the caller must wipe them.
std::vector<char> encode(MessageType type, std::string_view payload);

/// Turns any text into one that the protocol allows. Removes control characters and truncates to
/// longestPayload. If the text is not well-formed UTF-8, replaces bytes outside ASCII with "?".
std::string presentable(std::string_view text);

/// Splits a stream into messages and checks the type, length and text of each.
class MessageReader {
public:
    MessageReader() = default;
    MessageReader(const MessageReader&) = delete;
    MessageReader& operator=(const MessageReader&) = delete;
    /// Wipes the remaining bytes, which may be an answer.
    ~MessageReader();

    void feed(std::span<const char> bytes);
    /// The next complete message, if there is one. The caller must wipe an answer.
    std::optional<Message> next();
    /// Whether the stream violated the protocol. Then next() returns nothing more.
    bool broken() const { return broken_; }
    /// Whether an incomplete message is left.
    bool midMessage() const { return !pending.empty(); }

private:
    std::string pending;
    bool broken_ = false;
};

/// The payload of a result message.
std::string encodeResult(HelperResult result, const RunNonce& nonce);
/// The result in a payload. Nothing if the payload is malformed or has another nonce.
std::optional<HelperResult> decodeResult(std::string_view payload, const RunNonce& nonce);

} // namespace kelo::authorization
