#include "Hex.h"

#include "authenticator/keys/Cryptography.h"
#include "authenticator/webauthn/AttestedCredentialData.h"
#include "authenticator/webauthn/AuthenticatorData.h"
#include "authenticator/webauthn/CborWriter.h"
#include "authenticator/webauthn/ClientData.h"

#include <cbor.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace kelo {

using namespace authenticator;

namespace {

struct CborRelease {
    void operator()(cbor_item_t* item) const { cbor_decref(&item); }
};
using CborItem = std::unique_ptr<cbor_item_t, CborRelease>;

std::string written(std::int64_t value) {
    return toHex(webauthn::CborWriter().integer(value).result());
}

std::string textHead(std::size_t length) {
    const Bytes bytes = webauthn::CborWriter().text(std::string(length, 'a')).result();
    EXPECT_EQ(std::string(bytes.end() - static_cast<long>(length), bytes.end()),
              std::string(length, 'a'));
    return toHex(Bytes(bytes.begin(), bytes.end() - static_cast<long>(length)));
}

std::string quotedOrigin(std::string origin) {
    webauthn::ClientData data;
    data.type = "t";
    data.origin = std::move(origin);
    const std::string json = webauthn::clientDataJson(data);
    const std::string start = "{\"type\":\"t\",\"challenge\":\"\",\"origin\":";
    const std::string end = ",\"crossOrigin\":false}";
    EXPECT_TRUE(json.starts_with(start) && json.ends_with(end)) << json;
    return json.substr(start.size(), json.size() - start.size() - end.size());
}

} // namespace

TEST(CborWriter, WritesIntegersInTheirShortestForm) {
    EXPECT_EQ(written(0), "00");
    EXPECT_EQ(written(23), "17");
    EXPECT_EQ(written(24), "1818");
    EXPECT_EQ(written(255), "18ff");
    EXPECT_EQ(written(256), "190100");
    EXPECT_EQ(written(65536), "1a00010000");
    EXPECT_EQ(written(4294967296), "1b0000000100000000");
    EXPECT_EQ(written(-1), "20");
    EXPECT_EQ(written(-7), "26");
    EXPECT_EQ(written(-24), "37");
    EXPECT_EQ(written(-25), "3818");
    EXPECT_EQ(written(-257), "390100");
    EXPECT_EQ(written(std::numeric_limits<std::int64_t>::min()), "3b7fffffffffffffff");
}

TEST(CborWriter, WritesLengthsInTheirShortestForm) {
    EXPECT_EQ(textHead(0), "60");
    EXPECT_EQ(textHead(23), "77");
    EXPECT_EQ(textHead(24), "7818");
    EXPECT_EQ(textHead(256), "790100");
    EXPECT_EQ(toHex(webauthn::CborWriter().bytes(Bytes(23)).result()).substr(0, 2), "57");
    EXPECT_EQ(toHex(webauthn::CborWriter().bytes(Bytes(24)).result()).substr(0, 4), "5818");
    EXPECT_EQ(toHex(webauthn::CborWriter().bytes(Bytes(256)).result()).substr(0, 6), "590100");
    EXPECT_EQ(toHex(webauthn::CborWriter().map(0).result()), "a0");
    EXPECT_EQ(toHex(webauthn::CborWriter().map(24).result()), "b818");
}

TEST(ClientData, EscapesOnlyWhatTheTemplateEscapes) {
    EXPECT_EQ(quotedOrigin("https://a/<b>&'+\x7f"), "\"https://a/<b>&'+\x7f\"");
    EXPECT_EQ(quotedOrigin("a\"b\\c"), "\"a\\\"b\\\\c\"");
    EXPECT_EQ(quotedOrigin("\n\t\x1f"), "\"\\u000a\\u0009\\u001f\"");
    EXPECT_EQ(quotedOrigin(std::string("\0", 1)), "\"\\u0000\"");
    EXPECT_EQ(quotedOrigin("\u00e9\U0001F511"), "\"\u00e9\U0001F511\"");
}

TEST(ClientData, NamesTheTopOriginAfterCrossOriginAndBeforeFurtherMembers) {
    webauthn::ClientData data;
    data.type = "webauthn.get";
    data.challenge = {0xFB, 0xFF};
    data.origin = "https://a.example";
    data.crossOrigin = true;
    data.topOrigin = "https://b.example";
    data.furtherMembers = "\"x\":1";
    EXPECT_EQ(webauthn::clientDataJson(data),
              "{\"type\":\"webauthn.get\",\"challenge\":\"-_8\",\"origin\":"
              "\"https://a.example\",\"crossOrigin\":true,\"topOrigin\":"
              "\"https://b.example\",\"x\":1}");
}

TEST(CoseKey, IsTheFiveMembersInCanonicalOrder) {
    webauthn::PublicKey key;
    key.x.fill(0x11);
    key.y.fill(0x22);
    key.y[0] = 0; // stays 32 bytes long
    const Bytes bytes = webauthn::coseKey(key);
    EXPECT_EQ(bytes.size(), 77U);
    std::string x, y = "00";
    for (int i = 0; i < 32; ++i)
        x += "11";
    for (int i = 0; i < 31; ++i)
        y += "22";
    EXPECT_EQ(toHex(bytes), "a5010203262001215820" + x + "225820" + y);
}

TEST(AuthenticatorData, IsThirtySevenBytesWithoutACredential) {
    webauthn::AuthenticatorData data;
    data.relyingPartyHash = authenticator::sha256(std::string_view("localhost"));
    data.flags = webauthn::flag::userPresent | webauthn::flag::userVerified;
    const Bytes bytes = encode(data);
    EXPECT_EQ(toHex(bytes), toHex(data.relyingPartyHash) + "0500000000");
}

TEST(AuthenticatorData, WritesTheCounterBigEndian) {
    webauthn::AuthenticatorData data;
    data.signatureCount = 0x01020304;
    const Bytes bytes = encode(data);
    EXPECT_EQ(toHex(ByteView(bytes).subspan(33)), "01020304");
}

TEST(AttestedCredentialData, WritesTheLengthOfALongIdBigEndian) {
    webauthn::AttestedCredentialData data;
    data.credentialId = Bytes(1023, 0xAB);
    const Bytes bytes = encode(data);
    EXPECT_EQ(bytes.size(), 16U + 2 + 1023 + 77);
    EXPECT_EQ(toHex(ByteView(bytes).first(19)), "0000000000000000000000000000000003ffab");
}

TEST(AttestedCredentialData, ALongerIdStopsTheProcess) {
    webauthn::AttestedCredentialData data;
    data.credentialId = Bytes(1024);
    EXPECT_DEATH(encode(data), "at most 1023 bytes");
}

TEST(AttestationObject, IsOneCborMapThatALibraryReads) {
    webauthn::AuthenticatorData data;
    data.attestedCredential.emplace();
    data.attestedCredential->credentialId = Bytes(1023);
    const Bytes bytes = attestationObject(data);
    cbor_load_result result{};
    const CborItem item(cbor_load(bytes.data(), bytes.size(), &result));
    ASSERT_EQ(result.error.code, CBOR_ERR_NONE);
    EXPECT_EQ(result.read, bytes.size());
    ASSERT_TRUE(cbor_isa_map(item.get()));
    ASSERT_EQ(cbor_map_size(item.get()), 3U);
    const cbor_pair* pairs = cbor_map_handle(item.get());
    EXPECT_EQ(cbor_bytestring_length(pairs[2].value), 1155U);
    EXPECT_EQ(toHex(ByteView(bytes).first(31)),
              "a363666d74646e6f6e656761747453746d74a0686175746844617461590483");
}

} // namespace kelo
