#include "e2e/ProgramFixture.h"

namespace kelo::e2e {

namespace {

using rig::button;
using rig::pageButton;
using rig::pageField;
using rig::pageHeading;

/// The first load finds no service, or the wrong one.
class FirstLoad : public ProgramFixture {
protected:
    void SetUp() override {}
};

} // namespace

TEST_F(FirstLoad, WithoutAServiceSaysSoAndTriesAgainOnRequest) {
    startKelo();
    user.awaitDrawn(pageHeading("Kelo cannot reach localhost"));
    desktop().tree.awaitGone(button("Sign in with passkey"));
    look("notice");
    startService();
    user.click(pageButton("Try again"));
    user.awaitLoginPage();
}

TEST_F(FirstLoad, UnderACertificateNobodyVouchesForShowsNothingOfThePage) {
    authority = folder.path() / "foreign-authority";
    rig::DemoService::makeAuthority(build(), authority, folder.path() / "authority.log");
    startService();
    startKelo();
    user.awaitDrawn(pageHeading("This page is not secure"));
    EXPECT_FALSE(desktop().tree.find(pageField("Email")));
    desktop().tree.awaitGone(button("Sign in with passkey"));
}

} // namespace kelo::e2e
