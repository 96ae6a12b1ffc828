#include "e2e/ProgramFixture.h"

#include <gmock/gmock.h>

namespace kelo::e2e {

namespace {

using rig::button;
using rig::label;

constexpr const char* none = "There is no passkey on this computer.";

class PasskeysWindow : public ProgramFixture {
protected:
    /// Another start, as in a terminal; it ends once the running program was told.
    void ask() {
        rig::KeloProcess second(build(), folder.path(), folder.path() / "second.log",
                                {"--passkeys"});
        EXPECT_EQ(second.awaitExit(std::chrono::seconds(30)), 0) << second.printed();
    }
    void openWithPasskeyOf(const Person& person) {
        becomeOwnerOfPasskey(person);
        ask();
        awaitWindow();
        deletion = button("Delete the passkey of " + person.email + " for localhost…");
        user.awaitDrawn(deletion);
    }
    static void awaitWindow() {
        desktop().tree.awaitThat("the window has the keyboard", [] {
            const auto active = desktop().screen.windows.active();
            return active && active->title == "Passkeys on This Computer";
        });
    }
    void agree() const {
        user.click(deletion);
        desktop().tree.await(button("Delete"));
        user.clickUntil("the password is asked for", button("Delete"),
                        [] { return desktop().tree.find(label("Password: ")).has_value(); });
    }

    rig::Wanted deletion;
};

} // namespace

TEST_F(PasskeysWindow, DeletesAPasskeyOnceItsOwnerIsVerified) {
    openWithPasskeyOf(ada);
    look("list");
    agree();
    look("question");
    user.answerSheet(desktop().loginPassword);
    desktop().tree.await(label("The passkey was deleted."));
    desktop().tree.await(label(none));
    awaitAnnounced("The passkey was deleted.");
    awaitWindow();
    look("deleted");
    user.press("Escape");
    user.pressSignInWithPasskey();
    user.awaitError("There is no passkey for localhost on this computer. Sign in another way, then "
                    "register one from the Account menu.");
}

TEST_F(PasskeysWindow, WhoIsNotVerifiedDeletesNothing) {
    openWithPasskeyOf(ada);
    agree();
    user.answerSheet("a wrong password");
    desktop().tree.await(rig::alert("Wrong password. Try again."));
    user.press("Escape");
    desktop().tree.await(label("Nothing was deleted."));
    awaitWindow();
    user.press("Escape");
    user.pressSignInWithPasskey();
    user.confirmSheet(desktop().loginPassword);
    user.awaitSignedIn("Ada");
    // It was used in the meantime.
    ask();
    awaitWindow();
    desktop().tree.awaitThat("the window says so", [] {
        return desktop().tree.picture().find("Last used on ") != std::string::npos;
    });
}

TEST_F(PasskeysWindow, IsShownWithoutAnyPageWhereTheProgramDoesNotRun) {
    endKelo();
    kelo = std::make_unique<rig::KeloProcess>(build(), folder.path(), folder.path() / "kelo.log",
                                              std::vector<std::string>{"--passkeys"});
    awaitWindow();
    desktop().tree.await(label(none));
    // This desktop has no security chip.
    desktop().tree.await(label("Security chip"));
    look("alone");
    EXPECT_THAT(desktop().bus.pages(), testing::IsEmpty());
    EXPECT_FALSE(desktop().tree.find(button("Sign in with passkey")));
    ask();
    EXPECT_EQ(desktop().screen.windows.managed().size(), 1U);
}

} // namespace kelo::e2e
