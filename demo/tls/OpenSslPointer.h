#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

namespace kelo::demo {

template <auto release>
struct OpenSslRelease {
    template <typename T>
    void operator()(T* object) const {
        release(object);
    }
};

template <typename T, auto release>
using OpenSslPointer = std::unique_ptr<T, OpenSslRelease<release>>;

using BioPointer = OpenSslPointer<BIO, BIO_free_all>;
using KeyPointer = OpenSslPointer<EVP_PKEY, EVP_PKEY_free>;
using CertificatePointer = OpenSslPointer<X509, X509_free>;
using ExtensionPointer = OpenSslPointer<X509_EXTENSION, X509_EXTENSION_free>;
using NumberPointer = OpenSslPointer<BIGNUM, BN_free>;

} // namespace kelo::demo
