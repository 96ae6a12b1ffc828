#include "linux/authorization/protocol/VerificationProtocol.h"

#include "base/SecretText.h"
#include "base/Utf8.h"

#include <algorithm>

namespace kelo::authorization {

namespace {

constexpr std::size_t headSize = 3;

bool isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return (byte < 0x20 && character != '\n' && character != '\t') || byte == 0x7F;
}

bool isText(std::string_view payload) {
    return isWellFormedUtf8(payload) && std::ranges::none_of(payload, isControl);
}

/// Whether the type exists and allows a payload of this length.
bool allowsLength(char type, std::size_t length) {
    switch (static_cast<MessageType>(type)) {
    case MessageType::begin:
        return length == RunNonce().size();
    case MessageType::result:
        return length == 1 + RunNonce().size();
    case MessageType::tryAgain:
        return length == 0;
    case MessageType::answer:
    case MessageType::information:
    case MessageType::error:
    case MessageType::hiddenPrompt:
    case MessageType::visiblePrompt:
        return length <= longestPayload;
    }
    return false;
}

bool allowsPayload(const Message& message) {
    switch (message.type) {
    case MessageType::information:
    case MessageType::error:
    case MessageType::hiddenPrompt:
    case MessageType::visiblePrompt:
        return isText(message.payload);
    case MessageType::answer:
        return message.payload.find('\0') == std::string::npos;
    default:
        return true;
    }
}

} // namespace

std::vector<char> encode(MessageType type, std::string_view payload) {
    payload = payload.substr(0, longestPayload);
    std::vector<char> bytes;
    bytes.reserve(headSize + payload.size());
    bytes.push_back(static_cast<char>(type));
    bytes.push_back(static_cast<char>(payload.size() >> 8));
    bytes.push_back(static_cast<char>(payload.size() & 0xFF));
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

std::string presentable(std::string_view text) {
    std::string result(text);
    // The module may use another locale. The ASCII part is still readable.
    if (!isWellFormedUtf8(result))
        std::ranges::replace_if(
            result, [](char c) { return static_cast<unsigned char>(c) > 0x7F; }, '?');
    std::erase_if(result, isControl);
    if (result.size() > longestPayload) {
        std::size_t end = longestPayload;
        while ((static_cast<unsigned char>(result[end]) & 0xC0) == 0x80)
            --end;
        result.resize(end);
    }
    return result;
}

MessageReader::~MessageReader() {
    wipe(pending);
}

void MessageReader::feed(std::span<const char> bytes) {
    if (broken_)
        return;
    // std::string does not wipe its old memory when it grows.
    if (pending.size() + bytes.size() > pending.capacity()) {
        std::string larger;
        larger.reserve(std::max(2 * pending.capacity(), pending.size() + bytes.size()));
        larger = pending;
        std::swap(larger, pending);
        wipe(larger);
    }
    pending.append(bytes.begin(), bytes.end());
}

std::optional<Message> MessageReader::next() {
    if (broken_ || pending.size() < headSize)
        return std::nullopt;
    const std::size_t length = static_cast<std::size_t>(static_cast<unsigned char>(pending[1]))
                                   << 8 |
                               static_cast<unsigned char>(pending[2]);
    if (!allowsLength(pending[0], length)) {
        broken_ = true;
        return std::nullopt;
    }
    if (pending.size() < headSize + length)
        return std::nullopt;
    Message message{static_cast<MessageType>(pending[0]), pending.substr(headSize, length)};
    std::string rest = pending.substr(headSize + length);
    std::swap(rest, pending);
    wipe(rest);
    if (!allowsPayload(message)) {
        broken_ = true;
        wipe(message.payload);
        return std::nullopt;
    }
    return message;
}

std::string encodeResult(HelperResult result, const RunNonce& nonce) {
    return static_cast<char>(result) + std::string(nonce.begin(), nonce.end());
}

std::optional<HelperResult> decodeResult(std::string_view payload, const RunNonce& nonce) {
    if (payload.size() != 1 + nonce.size() || !std::ranges::equal(payload.substr(1), nonce))
        return std::nullopt;
    const auto result = static_cast<HelperResult>(payload[0]);
    switch (result) {
    case HelperResult::verified:
    case HelperResult::failed:
    case HelperResult::undecided:
    case HelperResult::unavailable:
        return result;
    }
    return std::nullopt;
}

} // namespace kelo::authorization
