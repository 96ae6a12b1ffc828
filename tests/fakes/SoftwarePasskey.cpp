#include "fakes/SoftwarePasskey.h"

#include <openssl/ec.h>
#include <openssl/rand.h>
#include <openssl/sha.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace kelo::fakes {
namespace {

void require(bool done) {
    if (!done)
        throw std::runtime_error("OpenSSL refused");
}

void append(Bytes& bytes, ByteView more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void append(Bytes& bytes, std::string_view more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes hashOf(ByteView bytes) {
    Bytes hash(SHA256_DIGEST_LENGTH);
    SHA256(bytes.data(), bytes.size(), hash.data());
    return hash;
}

/// The COSE form: a map of five, kty 2, alg -7, crv 1, x, y.
Bytes coseKeyOf(EVP_PKEY* key) {
    std::array<unsigned char, 65> point{};
    std::size_t size = 0;
    require(EVP_PKEY_get_octet_string_param(key, "pub", point.data(), point.size(), &size) == 1 &&
            size == point.size());
    Bytes cose = {0xa5, 0x01, 0x02, 0x03, 0x26, 0x20, 0x01, 0x21, 0x58, 0x20};
    append(cose, ByteView(point).subspan(1, 32));
    append(cose, Bytes{0x22, 0x58, 0x20});
    append(cose, ByteView(point).subspan(33, 32));
    return cose;
}

} // namespace

SoftwarePasskey::SoftwarePasskey(std::string origin)
    : origin(std::move(origin)), credentialId(32), key(EVP_EC_gen("P-256")) {
    require(key != nullptr && RAND_bytes(credentialId.data(), 32) == 1);
    publicKey = coseKeyOf(key.get());
}

std::string SoftwarePasskey::clientData(std::string_view type, ByteView challenge) const {
    return "{\"type\":\"" + std::string(type) + "\",\"challenge\":\"" + base64Url(challenge) +
           "\",\"origin\":\"" + origin + "\",\"crossOrigin\":" + (crossOrigin ? "true" : "false") +
           extraClientData + "}";
}

Bytes SoftwarePasskey::authenticatorData(std::uint8_t flags) const {
    Bytes data = hashOf(bytesOf(relyingParty));
    data.push_back(flags);
    for (const int shift : {24, 16, 8, 0})
        data.push_back(static_cast<std::uint8_t>(counter >> shift));
    return data;
}

Bytes SoftwarePasskey::attestationObject() const {
    Bytes data = authenticatorData(registrationFlags);
    append(data, aaguid);
    data.push_back(static_cast<std::uint8_t>(credentialId.size() >> 8));
    data.push_back(static_cast<std::uint8_t>(credentialId.size()));
    append(data, credentialId);
    append(data, publicKey);

    Bytes object = {0xa3};
    append(object, "cfmt");
    object.push_back(static_cast<std::uint8_t>(0x60 + format.size()));
    append(object, format);
    append(object, "gattStmt");
    append(object, statement);
    append(object, "hauthData");
    if (data.size() < 256) {
        append(object, Bytes{0x58, static_cast<std::uint8_t>(data.size())});
    } else {
        append(object, Bytes{0x59, static_cast<std::uint8_t>(data.size() >> 8),
                             static_cast<std::uint8_t>(data.size())});
    }
    append(object, data);
    return object;
}

Bytes SoftwarePasskey::sign(ByteView authenticatorData, std::string_view clientData) const {
    Bytes message(authenticatorData.begin(), authenticatorData.end());
    append(message, hashOf(bytesOf(clientData)));

    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                          &EVP_MD_CTX_free);
    std::size_t size = 0;
    require(EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, key.get()) == 1 &&
            EVP_DigestSign(context.get(), nullptr, &size, message.data(), message.size()) == 1);
    Bytes signature(size);
    require(EVP_DigestSign(context.get(), signature.data(), &size, message.data(),
                           message.size()) == 1);
    signature.resize(size);
    return signature;
}

nlohmann::json SoftwarePasskey::attestation(ByteView challenge) const {
    const auto identifier = base64Url(credentialId);
    return {{"id", identifier},
            {"rawId", identifier},
            {"type", "public-key"},
            {"authenticatorAttachment", "platform"},
            {"clientExtensionResults", nlohmann::json::object()},
            {"response",
             {{"clientDataJSON", base64Url(clientData(registrationType, challenge))},
              {"attestationObject", base64Url(attestationObject())},
              {"transports", {"internal"}}}}};
}

nlohmann::json SoftwarePasskey::assertion(ByteView challenge) const {
    const auto identifier = base64Url(credentialId);
    const auto signedClientData = clientData(assertionType, challenge);
    const auto data = authenticatorData(assertionFlags);
    return {{"id", identifier},
            {"rawId", identifier},
            {"type", "public-key"},
            {"authenticatorAttachment", "platform"},
            {"clientExtensionResults", nlohmann::json::object()},
            {"response",
             {{"clientDataJSON", base64Url(signedClientData)},
              {"authenticatorData", base64Url(data)},
              {"signature", base64Url(sign(data, signedClientData))},
              {"userHandle", base64Url(userHandle)}}}};
}

std::string SoftwarePasskey::base64Url(ByteView bytes) {
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    const int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(),
                                     static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(size));
    std::ranges::replace(text, '+', '-');
    std::ranges::replace(text, '/', '_');
    std::erase(text, '=');
    return text;
}

std::string SoftwarePasskey::base64Url(std::string_view text) {
    return base64Url(bytesOf(text));
}

Bytes SoftwarePasskey::fromBase64Url(std::string_view text) {
    std::string padded(text);
    std::ranges::replace(padded, '-', '+');
    std::ranges::replace(padded, '_', '/');
    const std::size_t padding = (4 - padded.size() % 4) % 4;
    padded.append(padding, '=');
    Bytes bytes(padded.size() / 4 * 3);
    const int size =
        EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(padded.data()),
                        static_cast<int>(padded.size()));
    require(size >= 0);
    bytes.resize(static_cast<std::size_t>(size) - padding);
    return bytes;
}

} // namespace kelo::fakes
