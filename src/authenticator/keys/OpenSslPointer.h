#pragma once

#include <memory>

namespace kelo::authenticator {

template <auto release>
struct OpenSslRelease {
    template <typename T>
    void operator()(T* object) const {
        release(object);
    }
};

/// Owns an object of OpenSSL, for instance OpenSslPointer<BIGNUM, BN_free>.
template <typename T, auto release>
using OpenSslPointer = std::unique_ptr<T, OpenSslRelease<release>>;

} // namespace kelo::authenticator
