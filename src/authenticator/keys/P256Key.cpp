#include "authenticator/keys/P256Key.h"

#include "authenticator/keys/Cryptography.h"

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/obj_mac.h>
#include <openssl/param_build.h>

#include <algorithm>
#include <array>
#include <utility>

namespace kelo::authenticator {

namespace {

using Number = OpenSslPointer<BIGNUM, BN_clear_free>;
using Group = OpenSslPointer<EC_GROUP, EC_GROUP_free>;
using Point = OpenSslPointer<EC_POINT, EC_POINT_clear_free>;
using ParameterBuilder = OpenSslPointer<OSSL_PARAM_BLD, OSSL_PARAM_BLD_free>;
using Parameters = OpenSslPointer<OSSL_PARAM, OSSL_PARAM_free>;
using Context = OpenSslPointer<EVP_PKEY_CTX, EVP_PKEY_CTX_free>;

constexpr std::size_t coordinateSize = 32;
constexpr std::size_t uncompressedSize = 1 + 2 * coordinateSize;
constexpr const char* curveName = "prime256v1";

Number secretNumber(const SecretBytes& scalar) {
    Number number(BN_secure_new());
    if (!number || !BN_bin2bn(scalar.view().data(), static_cast<int>(scalar.size()), number.get()))
        cryptographyFailed("reading a private key");
    BN_set_flags(number.get(), BN_FLG_CONSTTIME);
    return number;
}

/// The public point of a private scalar, uncompressed. Nothing for a scalar outside
/// 1 .. order - 1.
std::optional<std::array<std::uint8_t, uncompressedSize>> publicPoint(const BIGNUM& scalar) {
    const Group group(EC_GROUP_new_by_curve_name(NID_X9_62_prime256v1));
    if (!group)
        cryptographyFailed("the curve P-256");
    if (BN_is_zero(&scalar) || BN_cmp(&scalar, EC_GROUP_get0_order(group.get())) >= 0)
        return std::nullopt;
    const Point point(EC_POINT_new(group.get()));
    std::array<std::uint8_t, uncompressedSize> encoded;
    if (!point || EC_POINT_mul(group.get(), point.get(), &scalar, nullptr, nullptr, nullptr) != 1 ||
        EC_POINT_point2oct(group.get(), point.get(), POINT_CONVERSION_UNCOMPRESSED, encoded.data(),
                           encoded.size(), nullptr) != encoded.size())
        cryptographyFailed("deriving a public key");
    return encoded;
}

} // namespace

P256Key P256Key::generate() {
    Handle key(EVP_EC_gen(curveName));
    if (!key)
        cryptographyFailed("making a P-256 key");
    return P256Key(std::move(key));
}

std::optional<P256Key> P256Key::fromScalar(const SecretBytes& scalar) {
    if (scalar.size() != coordinateSize)
        return std::nullopt;
    const Number number = secretNumber(scalar);
    const auto point = publicPoint(*number);
    if (!point)
        return std::nullopt;
    const ParameterBuilder builder(OSSL_PARAM_BLD_new());
    if (!builder ||
        OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, curveName, 0) !=
            1 ||
        OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, point->data(),
                                         point->size()) != 1 ||
        OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PRIV_KEY, number.get()) != 1)
        cryptographyFailed("reading a private key");
    const Parameters parameters(OSSL_PARAM_BLD_to_param(builder.get()));
    const Context context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
    EVP_PKEY* made = nullptr;
    if (!parameters || !context || EVP_PKEY_fromdata_init(context.get()) != 1 ||
        EVP_PKEY_fromdata(context.get(), &made, EVP_PKEY_KEYPAIR, parameters.get()) != 1)
        cryptographyFailed("reading a private key");
    return P256Key(Handle(made));
}

webauthn::PublicKey P256Key::publicKey() const {
    std::array<std::uint8_t, uncompressedSize> encoded;
    std::size_t length = 0;
    if (EVP_PKEY_get_octet_string_param(key.get(), OSSL_PKEY_PARAM_PUB_KEY, encoded.data(),
                                        encoded.size(), &length) != 1 ||
        length != encoded.size())
        cryptographyFailed("reading a public key");
    webauthn::PublicKey result;
    std::copy_n(encoded.begin() + 1, coordinateSize, result.x.begin());
    std::copy_n(encoded.begin() + 1 + coordinateSize, coordinateSize, result.y.begin());
    return result;
}

SecretBytes P256Key::scalar() const {
    BIGNUM* read = nullptr;
    if (EVP_PKEY_get_bn_param(key.get(), OSSL_PKEY_PARAM_PRIV_KEY, &read) != 1)
        cryptographyFailed("reading a private key");
    const Number number(read);
    SecretBytes result(coordinateSize);
    if (BN_bn2binpad(number.get(), result.data(), coordinateSize) != coordinateSize)
        cryptographyFailed("reading a private key");
    return result;
}

Bytes P256Key::sign(ByteView digest) const {
    const Context context(EVP_PKEY_CTX_new_from_pkey(nullptr, key.get(), nullptr));
    Bytes signature(static_cast<std::size_t>(EVP_PKEY_get_size(key.get())));
    std::size_t length = signature.size();
    if (!context || EVP_PKEY_sign_init(context.get()) != 1 ||
        EVP_PKEY_sign(context.get(), signature.data(), &length, digest.data(), digest.size()) != 1)
        cryptographyFailed("signing");
    signature.resize(length);
    return signature;
}

} // namespace kelo::authenticator
