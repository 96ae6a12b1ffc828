#include "passkey/PasskeyError.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

TEST(PasskeyError, DescriptionsAreExact) {
    EXPECT_EQ(passkey::PasskeyError::optionsFailed().localizedDescription(),
              "Could not start passkey login.");
    EXPECT_EQ(passkey::PasskeyError::noSessionCookie().localizedDescription(),
              "Signed in but no session was returned.");
    EXPECT_EQ(passkey::PasskeyError::signInRejected().localizedDescription(),
              "Passkey was not accepted.");
}

TEST(PasskeyError, BadResponseShowsItsTextUnchanged) {
    EXPECT_EQ(passkey::PasskeyError::badResponse("No CSRF token").localizedDescription(),
              "No CSRF token");
    EXPECT_EQ(passkey::PasskeyError::badResponse("").localizedDescription(), "");
}

TEST(PasskeyError, CasesAreDeclaredInTheirOrder) {
    using Case = passkey::PasskeyError::Case;
    EXPECT_LT(Case::badResponse, Case::optionsFailed);
    EXPECT_LT(Case::optionsFailed, Case::noSessionCookie);
    EXPECT_LT(Case::noSessionCookie, Case::signInRejected);
}

TEST(PasskeyError, ReachesAnyCallerAsItsDescription) {
    EXPECT_EQ(
        localizedDescription(std::make_exception_ptr(passkey::PasskeyError::signInRejected())),
        "Passkey was not accepted.");
    EXPECT_EQ(localizedDescription(std::make_exception_ptr(3)),
              "Something unexpected went wrong. Please try again.");
}

TEST(PasskeyError, CopiesAreEqual) {
    const auto error = passkey::PasskeyError::badResponse("No response");
    const auto copy = error; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy, error);
    EXPECT_FALSE(copy == passkey::PasskeyError::badResponse("No CSRF token"));
}

} // namespace
} // namespace kelo
