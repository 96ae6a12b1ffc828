#include "passkey/JsonReply.h"
#include "platform/PlatformError.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

using platform::bytesOf;

TEST(JsonReply, ObjectsAndArraysAreRead) {
    EXPECT_EQ(parseJson(bytesOf(R"({"a":1})")), (nlohmann::json{{"a", 1}}));
    EXPECT_TRUE(parseJson(bytesOf("[]")).is_array());
}

TEST(JsonReply, WhatIsNotJsonAndBareScalarsFailWithASentence) {
    for (const char* text : {"", "<html>", "{", "3", "\"text\"", "null", "true", "{} {}",
                             "{\"a\":\xFF}", "[1e99999]"}) {
        EXPECT_FALSE(parsedJson(bytesOf(text))) << text;
        try {
            parseJson(bytesOf(text));
            ADD_FAILURE() << text;
        } catch (const platform::PlatformError& error) {
            EXPECT_EQ(error.kind(), platform::PlatformErrorKind::invalidJson);
            EXPECT_EQ(error.localizedDescription(),
                      "The service sent a reply that is not valid JSON. Please try again later.");
        }
    }
}

TEST(JsonReply, MembersAreFoundByTheirExactNameAndTypeAlone) {
    const auto value = parseJson(bytesOf(R"({"token":"x","number":1,"none":null})"));
    EXPECT_EQ(stringMember(value, "token"), "x");
    EXPECT_EQ(stringMember(value, "Token"), std::nullopt);
    EXPECT_EQ(stringMember(value, "number"), std::nullopt);
    EXPECT_EQ(stringMember(value, "none"), std::nullopt);
    EXPECT_EQ(stringMember(parseJson(bytesOf("[\"token\"]")), "token"), std::nullopt);
}

TEST(JsonReply, DeeplyNestedReplyDoesNotOverflowTheStack) {
    EXPECT_TRUE(parsedJson(bytesOf(std::string(200000, '[') + std::string(200000, ']'))));
}

TEST(JsonReply, TextIsWrittenCompactly) {
    EXPECT_EQ(serializeJson({{"a", nlohmann::json::array({1, "é"})}}), "{\"a\":[1,\"é\"]}");
}

TEST(JsonReply, TextThatIsNotUtf8CannotBeWritten) {
    EXPECT_THROW(serializeJson({{"a", "\xFF"}}), platform::PlatformError);
}

} // namespace
} // namespace kelo
