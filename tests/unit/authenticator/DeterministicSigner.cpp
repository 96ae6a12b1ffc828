#include "DeterministicSigner.h"

#include "authenticator/keys/OpenSslPointer.h"

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/ecdsa.h>
#include <openssl/hmac.h>
#include <openssl/obj_mac.h>

#include <initializer_list>
#include <stdexcept>

namespace kelo {

namespace {

using Number = authenticator::OpenSslPointer<BIGNUM, BN_free>;
using Arithmetic = authenticator::OpenSslPointer<BN_CTX, BN_CTX_free>;
using Group = authenticator::OpenSslPointer<EC_GROUP, EC_GROUP_free>;
using Point = authenticator::OpenSslPointer<EC_POINT, EC_POINT_free>;
using Signature = authenticator::OpenSslPointer<ECDSA_SIG, ECDSA_SIG_free>;

void require(bool held) {
    if (!held)
        throw std::runtime_error("OpenSSL failed");
}

Number number(const Bytes& bytes) {
    return Number(BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr));
}

Bytes octets(const BIGNUM& value) {
    Bytes bytes(32);
    require(BN_bn2binpad(&value, bytes.data(), 32) == 32);
    return bytes;
}

Bytes concatenated(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes hmac(const Bytes& key, const Bytes& data) {
    Bytes result(32);
    require(HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), data.data(), data.size(),
                 result.data(), nullptr) != nullptr);
    return result;
}

/// RFC 6979 section 3.2; the names are the standard's, in lower case.
class NonceGenerator {
public:
    NonceGenerator(const Bytes& x, const Bytes& h1) : v(32, 0x01), k(32, 0x00) {
        for (const std::uint8_t step : {std::uint8_t{0}, std::uint8_t{1}}) {
            k = hmac(k, concatenated({v, {step}, x, h1}));
            v = hmac(k, v);
        }
    }
    Bytes next() {
        if (used) {
            k = hmac(k, concatenated({v, {0}}));
            v = hmac(k, v);
        }
        used = true;
        v = hmac(k, v);
        return v;
    }

private:
    Bytes v, k;
    bool used = false;
};

} // namespace

Bytes signDeterministically(const Bytes& privateScalar, const authenticator::Sha256Digest& digest) {
    const Arithmetic arithmetic(BN_CTX_new());
    const Group group(EC_GROUP_new_by_curve_name(NID_X9_62_prime256v1));
    const BIGNUM* order = EC_GROUP_get0_order(group.get());
    const Number d = number(privateScalar);
    const Number h = number(Bytes(digest.begin(), digest.end()));
    const Number reduced(BN_new());
    require(BN_nnmod(reduced.get(), h.get(), order, arithmetic.get()) == 1);

    NonceGenerator nonces(privateScalar, octets(*reduced));
    while (true) {
        const Number k = number(nonces.next());
        if (BN_is_zero(k.get()) || BN_cmp(k.get(), order) >= 0)
            continue;
        const Point point(EC_POINT_new(group.get()));
        Number r(BN_new());
        Number s(BN_new());
        require(
            EC_POINT_mul(group.get(), point.get(), k.get(), nullptr, nullptr, arithmetic.get()) &&
            EC_POINT_get_affine_coordinates(group.get(), point.get(), r.get(), nullptr,
                                            arithmetic.get()) &&
            BN_nnmod(r.get(), r.get(), order, arithmetic.get()));
        const Number inverse(BN_mod_inverse(nullptr, k.get(), order, arithmetic.get()));
        require(BN_mod_mul(s.get(), r.get(), d.get(), order, arithmetic.get()) &&
                BN_mod_add(s.get(), s.get(), reduced.get(), order, arithmetic.get()) &&
                BN_mod_mul(s.get(), s.get(), inverse.get(), order, arithmetic.get()));
        if (BN_is_zero(r.get()) || BN_is_zero(s.get()))
            continue;
        const Signature signature(ECDSA_SIG_new());
        require(ECDSA_SIG_set0(signature.get(), r.release(), s.release()));
        Bytes encoded(static_cast<std::size_t>(i2d_ECDSA_SIG(signature.get(), nullptr)));
        unsigned char* end = encoded.data();
        require(i2d_ECDSA_SIG(signature.get(), &end) == static_cast<int>(encoded.size()));
        return encoded;
    }
}

} // namespace kelo
