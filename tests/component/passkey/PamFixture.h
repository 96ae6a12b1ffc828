#pragma once

#include "VerificationFixture.h"

#include <pwd.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace kelo {

/// A copy of the real helper, with a PAM service of the test's own beside it.
class PamFixture : public VerificationFixture {
protected:
    PamFixture() {
        std::filesystem::create_directories(services);
        std::filesystem::copy_file(KELO_VERIFY_USER, helper);
        std::ofstream(passwords) << ::getpwuid(::getuid())->pw_name << ":open sesame:kelo\n";
    }
    void SetUp() override {
        for (const char* file : {"/etc/pam.d/kelo", "/usr/lib/pam.d/kelo"}) {
            if (std::filesystem::exists(file))
                GTEST_SKIP() << "Kelo is installed here, and its " << file
                             << " goes before the service of the test.";
        }
    }

    void service(const std::string& lines) const { std::ofstream(services / "kelo") << lines; }
    std::string passwordLines() const {
        const std::string arguments = std::string(matrix) + " passdb=" + passwords + "\n";
        return "auth required " + arguments + "account required " + arguments;
    }
    /// A line's end: the module of the test with this habit.
    static std::string habit(const std::string& name) {
        return std::string(talkative) + " " + name + "\n";
    }
    void authenticatesWith(const std::string& name) const {
        service("auth required " + habit(name) + "account required pam_permit.so\n");
    }
    static std::vector<std::string> environment() { return forSanitizers(); }

    static constexpr const char* matrix = KELO_PAM_MATRIX;
    static constexpr const char* talkative = KELO_TALKATIVE_PAM_MODULE;
    static constexpr const char* everybody =
        "auth required pam_permit.so\naccount required pam_permit.so\n";

    std::filesystem::path programs = folder.path() / "programs";
    std::filesystem::path helper = programs / "kelo-verify-user";
    std::filesystem::path services = programs / "pam.d";
    std::string passwords = folder.path() / "passwords";
    authorization::PamVerifier verifier{helper, environment()};
};

} // namespace kelo
