#include "service/JsonReply.h"
#include "base/Failure.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

TEST(JsonReply, ObjectsAndArraysAreRead) {
    EXPECT_EQ(service::parseJson(bytesOf(R"({"a":1})")), (nlohmann::json{{"a", 1}}));
    EXPECT_TRUE(service::parseJson(bytesOf("[]")).is_array());
}

TEST(JsonReply, WhatIsNotJsonAndBareScalarsFailWithASentence) {
    for (const char* text : {"", "<html>", "{", "3", "\"text\"", "null", "true", "{} {}",
                             "{\"a\":\xFF}", "[1e99999]"}) {
        EXPECT_FALSE(service::parsedJson(bytesOf(text))) << text;
        try {
            service::parseJson(bytesOf(text));
            ADD_FAILURE() << text;
        } catch (const Failure& error) {
            EXPECT_EQ(error.kind(), FailureKind::invalidJson);
            EXPECT_EQ(error.localizedDescription(),
                      "The service sent a reply that is not valid JSON. Please try again later.");
        }
    }
}

TEST(JsonReply, MembersAreFoundByTheirExactNameAndTypeAlone) {
    const auto value = service::parseJson(bytesOf(R"({"token":"x","number":1,"none":null})"));
    EXPECT_EQ(service::stringMember(value, "token"), "x");
    EXPECT_EQ(service::stringMember(value, "Token"), std::nullopt);
    EXPECT_EQ(service::stringMember(value, "number"), std::nullopt);
    EXPECT_EQ(service::stringMember(value, "none"), std::nullopt);
    EXPECT_EQ(service::stringMember(service::parseJson(bytesOf("[\"token\"]")), "token"),
              std::nullopt);
}

std::string nested(std::size_t levels, const std::string& open, const std::string& close) {
    std::string text;
    for (std::size_t level = 0; level < levels; ++level)
        text += open;
    text += "[]";
    for (std::size_t level = 0; level < levels; ++level)
        text += close;
    return text;
}

TEST(JsonReply, ReplyMayBeNestedSixtyFourLevelsDeepAndNoDeeper) {
    EXPECT_TRUE(service::parsedJson(bytesOf(nested(63, "[", "]"))));
    EXPECT_FALSE(service::parsedJson(bytesOf(nested(64, "[", "]"))));
    EXPECT_TRUE(service::parsedJson(bytesOf(nested(63, R"({"a":)", "}"))));
    EXPECT_FALSE(service::parsedJson(bytesOf(nested(64, R"({"a":)", "}"))));
    EXPECT_FALSE(service::parsedJson(bytesOf(nested(100000, "[", "]"))));
    EXPECT_THROW(service::parseJson(bytesOf(nested(64, "[", "]"))), Failure);
}

TEST(JsonReply, LevelsThatAreClosedAgainDoNotCount) {
    std::string text = "[0";
    for (int member = 0; member < 100; ++member)
        text += R"(,[],{},{"a":[]})";
    EXPECT_TRUE(service::parsedJson(bytesOf(text + "]")));
}

TEST(JsonReply, BracketsWithinTextsDoNotCount) {
    const std::string brackets(100, '[');
    EXPECT_TRUE(service::parsedJson(bytesOf(R"({"a":")" + brackets + R"("})")));
    EXPECT_TRUE(service::parsedJson(bytesOf(R"({"a":"\")" + brackets + R"("})")));
    EXPECT_TRUE(service::parsedJson(bytesOf(R"({"\\":")" + brackets + R"("})")));
    // A text that ends with a backslash, after which the brackets are real.
    EXPECT_FALSE(service::parsedJson(bytesOf(R"({"a":"\\","b":)" + nested(64, "[", "]") + "}")));
    // Closing brackets in a text do not make room for others.
    EXPECT_FALSE(
        service::parsedJson(bytesOf(R"({"a":"]]]]]]]]","b":)" + nested(64, "[", "]") + "}")));
}

TEST(JsonReply, TextIsWrittenCompactly) {
    EXPECT_EQ(service::serializeJson({{"a", nlohmann::json::array({1, "é"})}}),
              "{\"a\":[1,\"é\"]}");
}

TEST(JsonReply, QuotedTextIsReadAsItWas) {
    std::string all;
    for (char character = 0; character < 0x7F; ++character)
        all += character;
    for (const std::string& text : {all + "\x7F é € 😀", std::string(), std::string("\\\"")}) {
        Bytes json = bytesOf("[");
        service::appendQuoted(json, text);
        json.push_back(']');
        EXPECT_EQ(service::parseJson(json), nlohmann::json::array({text}));
        EXPECT_LE(json.size(), 2 + service::longestQuoted(text));
    }
}

TEST(JsonReply, QuotedTextDoesNotMoveWhereThereIsRoom) {
    for (const char character : {'a', '"', '\n'}) {
        const std::string text(100, character);
        Bytes json;
        json.reserve(service::longestQuoted(text));
        const auto* place = json.data();
        service::appendQuoted(json, text);
        EXPECT_EQ(json.data(), place);
    }
}

TEST(JsonReply, QuotedTextMustBeUtf8) {
    Bytes json = bytesOf("[");
    EXPECT_THROW(service::appendQuoted(json, "secret\xFF"), Failure);
    EXPECT_EQ(textOf(json), "[");
}

TEST(JsonReply, TextThatIsNotUtf8CannotBeWritten) {
    EXPECT_THROW(service::serializeJson({{"a", "\xFF"}}), Failure);
}

} // namespace
} // namespace kelo
