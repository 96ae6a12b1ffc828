#include "demo/tls/Authority.h"
#include "DemoProcess.h"
#include "HttpsClient.h"
#include "demo/base/AtomicFile.h"
#include "demo/tls/CertificateMaker.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <openssl/x509.h>
#include <sys/stat.h>

#include <map>
#include <string>

namespace kelo::demo {
namespace {

class PrivateAuthority : public testing::Test {
protected:
    Outcome init() const {
        return runDemoService({"--init", "--authority", files.directory.string()});
    }

    std::map<std::string, std::string> contents() const {
        std::map<std::string, std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(files.directory))
            all[entry.path().filename()] = readFileIfPresent(entry.path()).value_or("");
        return all;
    }

    static mode_t modeOf(const std::filesystem::path& path) {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    /// Puts a server certificate in place that ends in so many days.
    void endServerCertificateIn(int days) const {
        const Identity authority{
            certificateFromPem(readFileIfPresent(files.authorityCertificate).value()),
            keyFromPem(readFileIfPresent(files.authorityKey).value())};
        auto server = makeServerIdentity(authority);
        X509_gmtime_adj(X509_getm_notAfter(server.certificate.get()), days * 86400L);
        X509_sign(server.certificate.get(), authority.key.get(), EVP_sha256());
        writeFileAtomically(files.serverKey, keyToPem(*server.key), 0600);
        writeFileAtomically(files.serverCertificate, certificateToPem(*server.certificate), 0644);
    }

    test::TemporaryFolder directory;
    AuthorityFiles files{directory.path() / "made" / "authority"};
};

TEST_F(PrivateAuthority, InitMakesTheFourFilesAndNothingElse) {
    const auto outcome = init();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.output + outcome.errors, "");
    std::string names;
    for (const auto& [name, content] : contents())
        names += name + " ";
    EXPECT_EQ(names, "ca-key.pem ca.pem server-key.pem server.pem ");
}

TEST_F(PrivateAuthority, KeysAreReadableByOwnerOnly) {
    ASSERT_EQ(init().exitCode, 0);
    EXPECT_EQ(modeOf(files.directory), 0700u);
    EXPECT_EQ(modeOf(files.authorityKey), 0600u);
    EXPECT_EQ(modeOf(files.serverKey), 0600u);
}

TEST_F(PrivateAuthority, LoosenedPermissionsAreTightened) {
    ASSERT_EQ(init().exitCode, 0);
    ::chmod(files.directory.c_str(), 0755);
    ::chmod(files.authorityKey.c_str(), 0644);
    ASSERT_EQ(init().exitCode, 0);
    EXPECT_EQ(modeOf(files.directory), 0700u);
    EXPECT_EQ(modeOf(files.authorityKey), 0600u);
}

TEST_F(PrivateAuthority, InitTwiceChangesNothing) {
    ASSERT_EQ(init().exitCode, 0);
    const auto before = contents();
    const auto written = std::filesystem::last_write_time(files.authorityCertificate);
    ASSERT_EQ(init().exitCode, 0);
    EXPECT_EQ(contents(), before);
    EXPECT_EQ(std::filesystem::last_write_time(files.authorityCertificate), written);
}

TEST_F(PrivateAuthority, ServerCertificateNearItsEndIsRenewedByTheSameAuthority) {
    ASSERT_EQ(init().exitCode, 0);
    for (const int days : {-1, 29}) {
        endServerCertificateIn(days);
        const auto before = contents();
        ASSERT_EQ(init().exitCode, 0);
        const auto after = contents();
        EXPECT_EQ(after.at("ca.pem"), before.at("ca.pem"));
        EXPECT_EQ(after.at("ca-key.pem"), before.at("ca-key.pem"));
        EXPECT_NE(after.at("server.pem"), before.at("server.pem"));
        EXPECT_NE(after.at("server-key.pem"), before.at("server-key.pem"));
    }
}

TEST_F(PrivateAuthority, ServerCertificateWithMoreThanAMonthLeftIsKept) {
    ASSERT_EQ(init().exitCode, 0);
    endServerCertificateIn(31);
    const auto before = contents();
    ASSERT_EQ(init().exitCode, 0);
    EXPECT_EQ(contents(), before);
}

TEST_F(PrivateAuthority, KeyThatDoesNotFitItsCertificateIsReplaced) {
    ASSERT_EQ(init().exitCode, 0);
    const auto other = makeAuthority();
    writeFileAtomically(files.serverKey, keyToPem(*other.key), 0600);
    const auto before = contents();
    ASSERT_EQ(init().exitCode, 0);
    EXPECT_EQ(contents().at("ca.pem"), before.at("ca.pem"));
    EXPECT_NE(contents().at("server.pem"), before.at("server.pem"));
}

TEST_F(PrivateAuthority, ServerCertificateOfAnotherAuthorityIsReplaced) {
    ASSERT_EQ(init().exitCode, 0);
    const auto other = makeServerIdentity(makeAuthority());
    writeFileAtomically(files.serverKey, keyToPem(*other.key), 0600);
    writeFileAtomically(files.serverCertificate, certificateToPem(*other.certificate), 0644);
    const auto before = contents();
    ASSERT_EQ(init().exitCode, 0);
    EXPECT_EQ(contents().at("ca.pem"), before.at("ca.pem"));
    EXPECT_NE(contents().at("server.pem"), before.at("server.pem"));
}

TEST_F(PrivateAuthority, RenewalWithoutTheAuthoritysKeyIsExplained) {
    ASSERT_EQ(init().exitCode, 0);
    std::filesystem::remove(files.authorityKey);
    EXPECT_EQ(init().exitCode, 0) << "nothing is due yet";
    std::filesystem::remove(files.serverCertificate);
    const auto before = contents();
    const auto outcome = init();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.errors.find("is missing or of another authority"), std::string::npos)
        << outcome.errors;
    EXPECT_EQ(contents(), before);
}

TEST_F(PrivateAuthority, InterruptedFirstRunIsFinished) {
    ASSERT_EQ(init().exitCode, 0);
    std::filesystem::remove(files.authorityCertificate);
    ASSERT_EQ(init().exitCode, 0);
    const DemoProcess service(files.directory);
    HttpsClient client(files.directory, service.origin());
    EXPECT_EQ(client.get("/login").status, 200u);
}

TEST_F(PrivateAuthority, SimultaneousFirstRunsAgree) {
    // Both start before either can be done; whichever is first, the other must find its work.
    std::string first;
    for (int round = 0; round < 3; ++round) {
        const AuthorityFiles fresh(directory.path() / ("round" + std::to_string(round)));
        const auto run = [&] {
            return gobject::GObjectPointer<GSubprocess>::adopt(
                g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, nullptr, DEMO_SERVICE, "--init",
                                 "--authority", fresh.directory.c_str(), nullptr));
        };
        const auto left = run();
        const auto right = run();
        EXPECT_TRUE(g_subprocess_wait_check(left.get(), nullptr, nullptr));
        EXPECT_TRUE(g_subprocess_wait_check(right.get(), nullptr, nullptr));
        const DemoProcess service(fresh.directory);
        HttpsClient client(fresh.directory, service.origin());
        EXPECT_EQ(client.get("/login").status, 200u);
    }
}

TEST_F(PrivateAuthority, ClientsOfAnotherAuthorityRefuseTheService) {
    ASSERT_EQ(init().exitCode, 0);
    const AuthorityFiles other(directory.path() / "other");
    prepareAuthority(other);
    const DemoProcess service(files.directory);
    HttpsClient client(other.directory, service.origin());
    EXPECT_THROW(client.get("/login"), std::runtime_error);
}

TEST_F(PrivateAuthority, CertificateIsGoodForTheAddressesToo) {
    ASSERT_EQ(init().exitCode, 0);
    const DemoProcess service(files.directory);
    HttpsClient client(files.directory, "https://127.0.0.1:" + service.port());
    EXPECT_EQ(client.get("/api/auth/csrf").status, 200u);
}

TEST_F(PrivateAuthority, AuthorityVouchesForThisComputersNamesOnly) {
    const auto authority = makeAuthority();
    for (const std::string name : {"localhost", "example.org"}) {
        auto server = makeServerIdentity(authority);
        X509* certificate = server.certificate.get();
        const int place = X509_get_ext_by_NID(certificate, NID_subject_alt_name, -1);
        X509_EXTENSION_free(X509_delete_ext(certificate, place));
        const ExtensionPointer names(
            X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, ("DNS:" + name).c_str()));
        ASSERT_EQ(X509_add_ext(certificate, names.get(), -1), 1);
        ASSERT_GT(X509_sign(certificate, authority.key.get(), EVP_sha256()), 0);

        const OpenSslPointer<X509_STORE, X509_STORE_free> store(X509_STORE_new());
        X509_STORE_add_cert(store.get(), authority.certificate.get());
        const OpenSslPointer<X509_STORE_CTX, X509_STORE_CTX_free> context(X509_STORE_CTX_new());
        ASSERT_EQ(X509_STORE_CTX_init(context.get(), store.get(), certificate, nullptr), 1);
        EXPECT_EQ(X509_verify_cert(context.get()), name == "localhost" ? 1 : 0) << name;
    }
}

TEST_F(PrivateAuthority, ServingWithoutAnAuthorityIsExplained) {
    const auto outcome = runDemoService({"--authority", files.directory.string(), "--port", "0"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.errors.find("kelo-demo-service --init --authority"), std::string::npos)
        << outcome.errors;
    EXPECT_FALSE(std::filesystem::exists(files.directory));
}

TEST_F(PrivateAuthority, ServingRenewsAnExpiredServerCertificate) {
    ASSERT_EQ(init().exitCode, 0);
    endServerCertificateIn(-1);
    const DemoProcess service(files.directory);
    HttpsClient client(files.directory, service.origin());
    EXPECT_EQ(client.get("/login").status, 200u);
}

TEST_F(PrivateAuthority, UnwritablePlaceIsExplained) {
    const auto outcome = runDemoService({"--init", "--authority", "/proc/kelo"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.errors.find("Could not make the directory /proc/kelo"), std::string::npos);
}

} // namespace
} // namespace kelo::demo
