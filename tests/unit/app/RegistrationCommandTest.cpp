#include "app/RegistrationCommand.h"
#include "unit/passkey/RegistrationFixture.h"

namespace kelo {
namespace {

struct RegistrationCommandTest : RegistrationFixture {
    std::vector<platform::HttpCookie> cookies = signedIn;
    int cookieReads = 0;
    app::RegistrationCommand command{registrar, [this] { return readCookies(this); }};

    static Task<std::vector<platform::HttpCookie>> readCookies(RegistrationCommandTest* test) {
        ++test->cookieReads;
        // Read before the prompt, so that what is sent is what was there when the user asked.
        EXPECT_FALSE(test->desktop.alerts().isUp());
        co_return test->cookies;
    }

    platform::MenuItem item() const {
        const auto menu = command.menu();
        EXPECT_EQ(menu.size(), 1u);
        return std::get<platform::MenuItem>(menu.at(0));
    }
    void choose() {
        item().action();
        desktop.loop.runUntilIdle();
    }
    void answer(int code, std::string_view text = {}) {
        desktop.alerts().answer(code, text);
        desktop.loop.runUntilIdle();
    }
    const platform::Alert& alert(std::size_t index) { return desktop.alerts().shown.at(index); }
    std::string sentPassword() const {
        const auto body =
            nlohmann::json::parse(textOf(desktop.sharedSession.sent.at(2).request.body.value()));
        return body.at("password");
    }
    void registerWith(std::string_view entry) {
        choose();
        session.reply(200, R"({"token":"csrf"})");
        session.reply(200, usualOptions);
        session.reply(200, "{}");
        answer(1000, entry);
        confirm();
    }
};

TEST_F(RegistrationCommandTest, ItemHasItsLabelAndNoShortcut) {
    EXPECT_EQ(item().label, "Register a Passkey on This Mac…");
    EXPECT_EQ(item().shortcut.has_value(), false);
    EXPECT_TRUE(item().enabled);
}

TEST_F(RegistrationCommandTest, ItemIsDisabledWhileARegistrationRuns) {
    choose();
    EXPECT_TRUE(item().enabled);
    session.holdNext();
    answer(1000, "code");
    EXPECT_FALSE(item().enabled);
    session.held->resume({{}, 500});
    desktop.loop.runUntilIdle();
    EXPECT_TRUE(item().enabled);
}

TEST_F(RegistrationCommandTest, ItemIsEnabledAgainAfterASuccess) {
    registerWith("code");
    EXPECT_TRUE(item().enabled);
}

TEST_F(RegistrationCommandTest, PromptHasItsTextsButtonsAndField) {
    choose();
    EXPECT_EQ(alert(0).messageText, "Bevestig registratie");
    EXPECT_EQ(alert(0).informativeText,
              "Vul je wachtwoord óf een MFA-code in om deze passkey te registreren.");
    EXPECT_EQ(alert(0).buttons, (std::vector<std::string>{"Registreer", "Annuleer"}));
    ASSERT_TRUE(alert(0).accessoryView);
    EXPECT_EQ(alert(0).accessoryView->placeholder, "Wachtwoord of MFA-code");
    EXPECT_EQ(alert(0).accessoryView->width, 240);
    EXPECT_EQ(alert(0).accessoryView->height, 24);
    EXPECT_TRUE(alert(0).accessoryIsInitialFirstResponder);
    EXPECT_EQ(cookieReads, 1);
    EXPECT_TRUE(session.sent.empty());
}

TEST_F(RegistrationCommandTest, BlankEntryEndsWithoutAlertOrRequest) {
    for (const char* entry : {"   ", "", "\t", " \t ", "\u00A0\u3000"}) {
        choose();
        answer(1000, entry);
        EXPECT_FALSE(desktop.alerts().isUp());
        EXPECT_TRUE(session.sent.empty());
        EXPECT_EQ(spawnedTaskCount(), 0u);
    }
}

TEST_F(RegistrationCommandTest, CancelEndsWithoutAlertThoughTextWasEntered) {
    for (const int code : {1001, 1002, 0, -1}) {
        choose();
        answer(code, "code");
        EXPECT_FALSE(desktop.alerts().isUp());
        EXPECT_TRUE(session.sent.empty());
    }
}

TEST_F(RegistrationCommandTest, BlanksAndTabsAroundTheEntryAreTrimmed) {
    registerWith(" \t my  secret\tcode \t");
    EXPECT_EQ(sentPassword(), "my  secret\tcode");
}

TEST_F(RegistrationCommandTest, LineFeedsAroundTheEntryAreKept) {
    registerWith(" \ncode\n ");
    EXPECT_EQ(sentPassword(), "\ncode\n");
}

TEST_F(RegistrationCommandTest, SuccessIsShownInThePlainAlert) {
    registerWith("code");
    ASSERT_TRUE(desktop.alerts().isUp());
    EXPECT_EQ(alert(1).messageText, "Passkey");
    EXPECT_EQ(alert(1).informativeText, "Passkey registered on this Mac.");
    EXPECT_TRUE(alert(1).buttons.empty());
    EXPECT_FALSE(alert(1).accessoryView);
    answer(1000);
    EXPECT_EQ(spawnedTaskCount(), 0u);
}

TEST_F(RegistrationCommandTest, MessageThatIsGoneFallsBackToItsShortForm) {
    choose();
    session.reply(200, R"({"token":"csrf"})");
    session.reply(200, usualOptions);
    session.reply(200, "{}");
    answer(1000, "code");
    // Someone clears the message between the end of the registration and the alert.
    bool cleared = false;
    const auto observation = registrar->observe([&] {
        if (registrar->message.get() && !std::exchange(cleared, true))
            registrar->message = std::nullopt;
    });
    confirm();
    EXPECT_TRUE(cleared);
    EXPECT_EQ(alert(1).informativeText, "Passkey registered.");
}

TEST_F(RegistrationCommandTest, WithoutASessionThePromptComesFirst) {
    cookies = {};
    choose();
    EXPECT_EQ(alert(0).messageText, "Bevestig registratie");
    answer(1000, "code");
    EXPECT_EQ(alert(1).messageText, "Passkey");
    EXPECT_EQ(alert(1).informativeText, "Log in first, then register a passkey.");
}

TEST_F(RegistrationCommandTest, FailureIsShownWithItsOwnText) {
    choose();
    session.reply(200, R"({"token":"csrf"})");
    session.fail(std::make_exception_ptr(Failure(
        FailureKind::cannotConnect, "Could not connect to localhost: Connection refused.")));
    answer(1000, "code");
    EXPECT_EQ(alert(1).informativeText, "Could not connect to localhost: Connection refused.");
}

TEST_F(RegistrationCommandTest, EveryRunReadsTheCookiesAnew) {
    choose();
    answer(1001);
    choose();
    EXPECT_EQ(cookieReads, 2);
}

} // namespace
} // namespace kelo
