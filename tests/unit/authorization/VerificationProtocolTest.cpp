#include "linux/authorization/protocol/VerificationProtocol.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelo::desktop {

namespace {

std::vector<char> bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

/// The messages in a stream that is fed at once, and whether it broke.
std::vector<authorization::Message> read(authorization::MessageReader& reader,
                                         std::span<const char> stream) {
    reader.feed(stream);
    std::vector<authorization::Message> messages;
    while (auto message = reader.next())
        messages.push_back(std::move(*message));
    return messages;
}

bool breaks(std::string_view stream) {
    authorization::MessageReader reader;
    return read(reader, stream).empty() && reader.broken();
}

using namespace std::string_view_literals;

} // namespace

TEST(VerificationProtocol, AMessageComesBackAsItWasSent) {
    for (const std::string& payload : {std::string(), std::string("Password: "),
                                       std::string("Schl\u00fcssel\n"), std::string(4096, 'x')}) {
        authorization::MessageReader reader;
        const auto messages =
            read(reader, encode(authorization::MessageType::hiddenPrompt, payload));
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_EQ(messages[0].type, authorization::MessageType::hiddenPrompt);
        EXPECT_EQ(messages[0].payload, payload);
        EXPECT_FALSE(reader.midMessage());
    }
}

TEST(VerificationProtocol, HasTheBytesItsHeaderDescribes) {
    EXPECT_EQ(encode(authorization::MessageType::information, "Hi"), bytes("I\0\2Hi"sv));
    EXPECT_EQ(encode(authorization::MessageType::answer, std::string(256, 'a')).at(1), 1);
    EXPECT_EQ(encode(authorization::MessageType::answer, std::string(5000, 'a')),
              encode(authorization::MessageType::answer,
                     std::string(authorization::longestPayload, 'a')));
}

TEST(VerificationProtocol, MessagesMayComeBytewise) {
    authorization::MessageReader reader;
    std::vector<authorization::Message> messages;
    for (const char byte : "I\0\2HiT\0\0E\0\1!"sv)
        for (authorization::Message& message : read(reader, std::span(&byte, 1)))
            messages.push_back(std::move(message));
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0].payload, "Hi");
    EXPECT_EQ(messages[1].type, authorization::MessageType::tryAgain);
    EXPECT_EQ(messages[2].payload, "!");
}

TEST(VerificationProtocol, HalfAMessageIsNone) {
    authorization::MessageReader reader;
    EXPECT_TRUE(read(reader, "I\0\2H"sv).empty());
    EXPECT_FALSE(reader.broken());
    EXPECT_TRUE(reader.midMessage());
}

TEST(VerificationProtocol, UnknownTypesBreakIt) {
    EXPECT_TRUE(breaks("X\0\0"sv));
    EXPECT_TRUE(breaks("i\0\0"sv));
    EXPECT_TRUE(breaks("\0\0\0"sv));
    EXPECT_TRUE(breaks("Password: "sv));
}

TEST(VerificationProtocol, LengthsBeyondTheirLimitBreakItBeforeTheirBytesCome) {
    EXPECT_TRUE(breaks("I\x10\1"sv));
    EXPECT_TRUE(breaks("A\xFF\xFF"sv));
    EXPECT_TRUE(breaks("B\0\xF"sv));
    EXPECT_TRUE(breaks("B\0\x11"sv));
    EXPECT_TRUE(breaks("R\0\1"sv));
    EXPECT_TRUE(breaks("T\0\1"sv));
}

TEST(VerificationProtocol, TextsThatAreNoTextsBreakIt) {
    EXPECT_TRUE(breaks("I\0\1\x1B"sv));
    EXPECT_TRUE(breaks("H\0\1\0"sv));
    EXPECT_TRUE(breaks("E\0\1\xFF"sv));
    EXPECT_TRUE(breaks("V\0\2\xC3("sv));
    EXPECT_TRUE(breaks("A\0\3a\0b"sv));
}

TEST(VerificationProtocol, NothingComesAfterABreak) {
    authorization::MessageReader reader;
    EXPECT_TRUE(read(reader, "X\0\0I\0\2Hi"sv).empty());
    EXPECT_TRUE(read(reader, "I\0\2Hi"sv).empty());
    EXPECT_TRUE(reader.broken());
}

TEST(VerificationProtocol, NothingComesAfterATextThatIsNone) {
    authorization::MessageReader reader;
    EXPECT_TRUE(read(reader, "I\0\1\x1BI\0\2Hi"sv).empty());
    EXPECT_TRUE(reader.broken());
    EXPECT_FALSE(reader.next());
}

TEST(VerificationProtocol, NothingIsKeptAfterABreak) {
    authorization::MessageReader reader;
    read(reader, "I\0\1\x1B"sv);
    EXPECT_FALSE(reader.midMessage());
    reader.feed("A\0\6secret"sv);
    EXPECT_FALSE(reader.midMessage());
}

TEST(VerificationProtocol, MakesAnyTextPresentable) {
    EXPECT_EQ(authorization::presentable("Password: "), "Password: ");
    EXPECT_EQ(authorization::presentable("a\x1B[31mb\r\n\tc\x7F"), "a[31mb\n\tc");
    EXPECT_EQ(authorization::presentable("Schl\xFCssel"), "Schl?ssel");
    const std::string cut = authorization::presentable(std::string(4095, 'x') + "\u00e9");
    EXPECT_EQ(cut, std::string(4095, 'x'));
    EXPECT_EQ(authorization::presentable(std::string(9000, 'x')).size(),
              authorization::longestPayload);
}

TEST(VerificationProtocol, AResultCountsOnlyWithTheNonceOfItsRun) {
    authorization::RunNonce nonce{};
    nonce.fill('m');
    authorization::RunNonce other = nonce;
    other.back() = 'n';
    for (const auto result :
         {authorization::HelperResult::verified, authorization::HelperResult::failed,
          authorization::HelperResult::undecided, authorization::HelperResult::unavailable}) {
        EXPECT_EQ(authorization::decodeResult(authorization::encodeResult(result, nonce), nonce),
                  result);
        EXPECT_EQ(authorization::decodeResult(authorization::encodeResult(result, other), nonce),
                  std::nullopt);
    }
    EXPECT_EQ(authorization::decodeResult("*" + std::string(16, 'm'), nonce), std::nullopt);
    EXPECT_EQ(authorization::decodeResult("", nonce), std::nullopt);
    EXPECT_EQ(authorization::decodeResult("+", nonce), std::nullopt);
}

} // namespace kelo::desktop
