#include "base/Base64.h"
#include "demo/accounts/AttemptLimiter.h"
#include "demo/accounts/OneTimeCode.h"
#include "demo/accounts/PasswordHash.h"
#include "demo/accounts/SessionTable.h"
#include "demo/http/FormData.h"
#include "demo/http/Template.h"
#include "demo/passkeys/ChallengeTable.h"
#include "demo/passkeys/ClientData.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kelo::demo {
namespace {

using namespace std::chrono_literals;

const ChallengeTable::Time start{1000s};

TEST(ChallengeTable, ChallengeExpiresAfterFiveMinutes) {
    ChallengeTable table;
    const auto first = table.issue("", start);
    const auto second = table.issue("", start);
    EXPECT_TRUE(table.consume(first, "", start + 5min - 1s));
    EXPECT_FALSE(table.consume(second, "", start + 5min));
}

TEST(ChallengeTable, ChallengeIsGoodOnce) {
    ChallengeTable table;
    const auto challenge = table.issue("", start);
    EXPECT_TRUE(table.consume(challenge, "", start));
    EXPECT_FALSE(table.consume(challenge, "", start));
}

TEST(ChallengeTable, ChallengeShownByAnotherIsUsedUp) {
    ChallengeTable table;
    const auto challenge = table.issue("ada", start);
    EXPECT_FALSE(table.consume(challenge, "grace", start));
    EXPECT_FALSE(table.consume(challenge, "ada", start));
}

TEST(ChallengeTable, OldestGivesWayWhenTheTableIsFull) {
    ChallengeTable table;
    const auto first = table.issue("", start);
    const auto second = table.issue("", start);
    for (std::size_t count = 2; count <= ChallengeTable::capacity; ++count)
        table.issue("", start);
    EXPECT_FALSE(table.consume(first, "", start));
    EXPECT_TRUE(table.consume(second, "", start));
}

TEST(SessionTable, SessionEndsAfterThirtyDays) {
    SessionTable table;
    const SessionTable::Time now{1000s};
    const auto token = table.open("ada@example.org", now);
    ASSERT_NE(table.find(token, now + 30 * 24h - 1s), nullptr);
    EXPECT_EQ(table.find(token, now + 30 * 24h), nullptr);
}

TEST(SessionTable, OldestSessionOfTheSameAccountGivesWay) {
    SessionTable table;
    const SessionTable::Time now{1000s};
    const auto grace = table.open("grace@example.org", now);
    const auto first = table.open("ada@example.org", now);
    for (std::size_t count = 0; count < SessionTable::capacity; ++count)
        table.open("ada@example.org", now + 1s);
    EXPECT_EQ(table.find(first, now), nullptr);
    EXPECT_NE(table.find(grace, now), nullptr);
}

TEST(AttemptLimiter, TriesComeBackAfterAMinute) {
    AttemptLimiter limiter;
    for (int count = 0; count < 10; ++count) {
        EXPECT_TRUE(limiter.mayTry("ada", start));
        limiter.noteFailure("ada", start);
    }
    EXPECT_FALSE(limiter.mayTry("ada", start + 59s));
    EXPECT_TRUE(limiter.mayTry("grace", start));
    EXPECT_TRUE(limiter.mayTry("ada", start + 60s));
}

TEST(OneTimeCode, GivesThePublishedValues) {
    // RFC 6238, appendix B, SHA-1; the last six of its eight digits.
    OneTimeCode code(bytesOf("12345678901234567890"));
    EXPECT_EQ(code.current(OneTimeCode::Time(59s)), "287082");
    EXPECT_EQ(code.current(OneTimeCode::Time(1111111109s)), "081804");
    EXPECT_EQ(code.current(OneTimeCode::Time(1234567890s)), "005924");
}

TEST(OneTimeCode, CodeOfTheStepBeforeIsStillGoodAndOlderOnesAreNot) {
    const OneTimeCode::Time now(600s);
    const Bytes secret = bytesOf("12345678901234567890");
    EXPECT_TRUE(OneTimeCode(secret).accept(OneTimeCode(secret).current(now - 30s), now));
    EXPECT_FALSE(OneTimeCode(secret).accept(OneTimeCode(secret).current(now - 60s), now));
    EXPECT_FALSE(OneTimeCode(secret).accept(OneTimeCode(secret).current(now + 30s), now));
    EXPECT_FALSE(OneTimeCode(secret).accept("", now));
}

TEST(OneTimeCode, AcceptedCodeAndThoseBeforeItAreUsedUp) {
    const OneTimeCode::Time now(600s);
    OneTimeCode code(bytesOf("12345678901234567890"));
    const auto before = code.current(now - 30s);
    EXPECT_TRUE(code.accept(code.current(now), now));
    EXPECT_FALSE(code.accept(code.current(now), now));
    EXPECT_FALSE(code.accept(before, now));
    EXPECT_TRUE(code.accept(code.current(now + 30s), now + 30s));
}

TEST(PasswordHash, MatchesThePasswordAndNothingElse) {
    const PasswordHash hash("nanosecond");
    EXPECT_TRUE(hash.matches("nanosecond"));
    EXPECT_FALSE(hash.matches("nanosecond "));
    EXPECT_FALSE(hash.matches(""));
}

TEST(FormData, DecodesAndRefusesWhatIsAmbiguous) {
    EXPECT_EQ(parseForm("a=1&a=2"), std::nullopt);
    EXPECT_EQ(parseForm("a=%ff"), std::nullopt);
    EXPECT_EQ(parseForm("a=%2"), std::nullopt);
    EXPECT_EQ(parseForm("a"), std::nullopt);
    EXPECT_TRUE(parseForm("").value().empty());
    const auto good = parseForm("a=1+2&b=%7B%22%3A,:");
    ASSERT_TRUE(good.has_value());
    EXPECT_EQ(good->at("a"), "1 2");
    EXPECT_EQ(good->at("b"), "{\":,:");
}

TEST(Template, EscapesValuesButNotMarkup) {
    EXPECT_EQ(fillTemplate("{{a}}|{{&a}}|{{", {{"a", "<&\"'>"}}),
              "&lt;&amp;&quot;&#39;&gt;|<&\"'>|{{");
    EXPECT_EQ(fillTemplate("{{a}}", {{"a", "{{b}}"}}), "{{b}}");
    EXPECT_THROW(fillTemplate("{{b}}", {}), std::out_of_range);
}

TEST(ClientData, PublishedExampleVerifies) {
    // The registration of test vector "none-es256" of WebAuthn Level 3, which has a member behind
    // the fixed ones.
    const auto text = bytesOf(
        R"({"type":"webauthn.create",)"
        R"("challenge":"AMMPt4UxxGTStncdq417YDwBFi8vpIa-pw8oOuVW4TA",)"
        R"("origin":"https://example.org","crossOrigin":false,)"
        R"("extraData":"clientDataJSON may be extended with additional fields in the future, such as this: BkQeDjdcTBrXBiAwJTLE5Q"})");
    const auto challenge =
        base64URLDecodeStrict("AMMPt4UxxGTStncdq417YDwBFi8vpIa-pw8oOuVW4TA").value();
    const auto check = [&](std::string_view type, std::string_view origin) {
        return isClientDataFor(text, type, challenge, origin);
    };
    EXPECT_TRUE(check("webauthn.create", "https://example.org"));
    EXPECT_FALSE(check("webauthn.get", "https://example.org"));
    EXPECT_FALSE(check("webauthn.create", "https://example.or"));
    EXPECT_FALSE(isClientDataFor(text, "webauthn.create", Bytes(32, 0), "https://example.org"));
}

TEST(ClientData, TextThatEndsOrGoesOnTooSoonIsRefused) {
    const Bytes challenge{0xfb, 0xff};
    const std::string head = "{\"type\":\"t\",\"challenge\":\"-_8\",\"origin\":\"o\\\"\\u000a\","
                             "\"crossOrigin\":false";
    const auto check = [&](const std::string& text) {
        return isClientDataFor(bytesOf(text), "t", challenge, "o\"\n");
    };
    EXPECT_TRUE(check(head + "}"));
    EXPECT_TRUE(check(head + ",\"a\":1}"));
    EXPECT_FALSE(check(head));
    EXPECT_FALSE(check(head + " }"));
    EXPECT_FALSE(check(head + "x"));
}

} // namespace
} // namespace kelo::demo
