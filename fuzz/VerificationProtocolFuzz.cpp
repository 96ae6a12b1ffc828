#include "linux/authorization/protocol/VerificationProtocol.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <string>

// Bytes from a helper that may be anything. The first byte says in what pieces the rest arrives.

using namespace kelo;

namespace {

void require(bool held) {
    if (!held)
        std::abort();
}

void examine(const authorization::Message& message, std::string_view stream,
             std::size_t& consumed) {
    require(message.payload.size() <= authorization::longestPayload);
    // A message is what was sent, and nothing is skipped between two.
    const auto again = authorization::encode(message.type, message.payload);
    require(stream.substr(consumed, again.size()) == std::string_view(again.data(), again.size()));
    consumed += again.size();
    if (message.type == authorization::MessageType::result) {
        authorization::RunNonce nonce{};
        std::copy_n(message.payload.begin() + 1, nonce.size(), nonce.begin());
        const auto result = authorization::decodeResult(message.payload, nonce);
        require(!result || authorization::encodeResult(*result, nonce) == message.payload);
        nonce[0] = static_cast<char>(nonce[0] ^ 1);
        require(!authorization::decodeResult(message.payload, nonce));
    }
    if (message.type == authorization::MessageType::information)
        require(authorization::presentable(message.payload) == message.payload);
}

// What one side makes presentable, the other side's reader takes.
void examinePresentable(std::string_view text) {
    const std::string shown = authorization::presentable(text);
    require(shown.size() <= authorization::longestPayload);
    require(authorization::presentable(shown) == shown);
    authorization::MessageReader reader;
    reader.feed(authorization::encode(authorization::MessageType::information, shown));
    const auto message = reader.next();
    require(message && message->payload == shown && !reader.midMessage());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::size_t piece = std::size_t{data[0]} + 1;
    const std::string stream(data + 1, data + size);
    examinePresentable(stream);

    authorization::MessageReader reader;
    std::size_t consumed = 0;
    for (std::size_t at = 0; at < stream.size(); at += piece) {
        reader.feed(std::span(stream).subspan(at, std::min(piece, stream.size() - at)));
        const bool wasBroken = reader.broken();
        while (const auto message = reader.next()) {
            require(!wasBroken);
            examine(*message, stream, consumed);
        }
    }
    return 0;
}
