#include "linux/http/ChunkedBody.h"

#include <gtest/gtest.h>

namespace kelo::test {

using http::ChunkedBody;
using State = ChunkedBody::State;

namespace {

struct Taken {
    State state;
    std::string body;
    friend bool operator==(const Taken&, const Taken&) = default;
};

// In one piece and byte by byte must come to the same.
Taken taken(std::string_view bytes) {
    Bytes whole;
    ChunkedBody atOnce;
    Taken result{atOnce.take(bytes, whole), textOf(whole)};

    Bytes slow;
    ChunkedBody byteByByte;
    State state = State::more;
    for (std::size_t i = 0; i < bytes.size() && state == State::more; ++i)
        state = byteByByte.take(bytes.substr(i, 1), slow);
    EXPECT_EQ(state, result.state) << bytes;
    EXPECT_EQ(textOf(slow), result.body) << bytes;
    return result;
}

} // namespace

TEST(ChunkedBody, WholeBodyEnds) {
    EXPECT_EQ(taken("5\r\nhello\r\n0\r\n\r\n"), (Taken{State::finished, "hello"}));
    EXPECT_EQ(taken("0\r\n\r\n"), (Taken{State::finished, ""}));
    EXPECT_EQ(taken("00a\r\n0123456789\r\n000\r\n\r\n"), (Taken{State::finished, "0123456789"}));
    EXPECT_EQ(taken("A\r\n\r\n\r\n\r\n\r\n\r\n\r\n0\r\n\r\n"),
              (Taken{State::finished, "\r\n\r\n\r\n\r\n\r\n"}));
}

TEST(ChunkedBody, ExtensionsAndTrailersAreSkipped) {
    EXPECT_EQ(taken("2;a=b\r\nhi\r\n0 ;last\r\nDigest: x\r\nMore: y\r\n\r\n"),
              (Taken{State::finished, "hi"}));
}

TEST(ChunkedBody, AnythingShortOfTheLastLineIsNotTheEnd) {
    const std::string whole = "5\r\nhello\r\n0\r\n\r\n";
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(taken(whole.substr(0, length)).state, State::more) << length;
}

TEST(ChunkedBody, ALineOfTheTrailerIsNotTheEnd) {
    EXPECT_EQ(taken("1\r\na\r\n0\r\nDigest: x\r\n"), (Taken{State::more, "a"}));
}

TEST(ChunkedBody, BytesAfterTheEndAreNotPartOfIt) {
    EXPECT_EQ(taken("1\r\na\r\n0\r\n\r\nHTTP/1.1 200 OK"), (Taken{State::finished, "a"}));
}

TEST(ChunkedBody, WhatIsNotWellFormedIsRefused) {
    for (const char* bytes :
         {"zz\r\n", "\r\n", "-1\r\n", "+1\r\n", " 1\r\n", "0x1\r\n", "1 2\r\n", "5\nhello\n",
          "5\r\nhello0\r\n\r\n", "5\r\nhelloXX\r\n", "fffffffffffffffff\r\n", "0\r\n\n"})
        EXPECT_EQ(taken(bytes).state, State::malformed) << bytes;
}

TEST(ChunkedBody, EndlessLineIsRefused) {
    EXPECT_EQ(taken(std::string(9000, '1')).state, State::malformed);
    EXPECT_EQ(taken("0\r\n" + std::string(9000, 'a')).state, State::malformed);
}

} // namespace kelo::test
