#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace kelo::test {

/// A certificate and its private key, both PEM.
struct Identity {
    std::string certificate;
    std::string key;
};

struct IdentityRequest {
    std::vector<std::string> hosts = {"localhost"};           ///< names or bare addresses
    std::chrono::seconds validFrom = -std::chrono::hours(1);  ///< from now
    std::chrono::seconds validUntil = std::chrono::hours(24); ///< from now
    bool forServers = true; ///< otherwise the certificate is for clients alone
};

/// A certificate authority for one test. Its certificates may be defective on purpose.
class TestAuthority {
public:
    explicit TestAuthority(const std::string& name = "Kelo test authority");
    ~TestAuthority();

    std::string pem() const;
    Identity issue(const IdentityRequest& request = {}) const;

    /// A self-signed certificate.
    static Identity selfSigned(const IdentityRequest& request = {});

private:
    struct Parts;
    std::unique_ptr<Parts> parts;
};

} // namespace kelo::test
