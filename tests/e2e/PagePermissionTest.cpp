#include "component/gtk/DesktopOnBus.h"
#include "e2e/ProgramFixture.h"
#include "testing/rig/StandInService.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::e2e {

namespace {

/// Tells by its heading what the microphone does.
constexpr const char* listeningPage = R"(<!doctype html><title>Listening</title>
<h1>Quiet</h1><button>Listen</button>
<script>
const heading = document.querySelector('h1');
document.querySelector('button').onclick = async () => {
  try {
    const stream = await navigator.mediaDevices.getUserMedia({audio: true});
    heading.textContent = 'Listening';
    stream.getTracks()[0].onended = () => heading.textContent = 'Ended';
  } catch (error) {
    heading.textContent = error.name;
  }
};
</script>)";

constexpr const char* question = "Allow localhost to use the microphone?";

/// Tells by its heading what becomes of a notification.
constexpr const char* notifyingPage = R"(<!doctype html><title>Notifying</title>
<h1>Quiet</h1><button>Notify</button>
<script>
const heading = document.querySelector('h1');
document.querySelector('button').onclick = async () => {
  heading.textContent = await Notification.requestPermission();
  if (Notification.permission !== 'granted') return;
  const notification = new Notification('Dinner', {body: 'At eight'});
  notification.onclick = () => { heading.textContent = 'Clicked'; notification.close(); };
};
</script>)";

class PagePermission : public ProgramFixture {
protected:
    void SetUp() override {
        if (!std::getenv("PULSE_SERVER"))
            GTEST_SKIP() << "There is no microphone here: run it inside "
                            "tests/component/with-microphone.";
        // The demo service makes the certificate that its stand-in uses as well.
        startService();
        service.reset();
        pages = std::make_unique<rig::StandInService>(
            authority,
            std::map<std::string, std::string>{{"/", listeningPage}, {"/notify", notifyingPage}});
        startKelo();
    }
    void TearDown() override {
        ProgramFixture::TearDown();
        pages.reset();
    }

    void listen() const { user.click(rig::pageButton("Listen")); }
    void awaitHeading(const std::string& text) const { user.awaitDrawn(rig::pageHeading(text)); }
    void startAgain() {
        endKelo();
        startKelo();
        awaitHeading("Quiet");
    }
    std::optional<rig::ScreenWindow> mainWindow() const {
        const auto windows = desktop().screen.windows.managed();
        const auto found =
            std::ranges::find(windows, kelo->identifier(), &rig::ScreenWindow::process);
        return found == windows.end() ? std::nullopt : std::optional(*found);
    }
    void closeWindow() const {
        desktop().screen.windows.tellManager(mainWindow()->identifier, "_NET_CLOSE_WINDOW");
        desktop().tree.awaitThat("Kelo's window is gone", [&] { return !mainWindow(); });
    }
    /// As somebody does who starts Kelo with an address.
    void showPage(const std::string& address) const {
        awaitHeading("Quiet");
        rig::KeloProcess second(build(), folder.path(), folder.path() / "second.log", {address});
        ASSERT_EQ(second.awaitExit(rig::deadline), 0) << second.printed();
    }
    bool questionIsOpen() const { return desktop().tree.find(rig::label(question)).has_value(); }

    std::unique_ptr<rig::StandInService> pages;
};

} // namespace

TEST_F(PagePermission, MicrophoneIsAskedForOnceAndTakenBack) {
    listen();
    user.awaitDrawn(rig::label(question));
    look("question");
    user.answerAlert("Allow");
    awaitHeading("Listening");
    look("listening");

    startAgain();
    listen();
    awaitHeading("Listening");
    EXPECT_FALSE(questionIsOpen());

    user.chooseFromMenu("Kelo", "Permissions…");
    user.awaitDrawn(rig::choice("Microphone: Ask"));
    look("permissions");
    user.click(rig::choice("Microphone: Don’t Allow"));
    awaitHeading("Ended");
    look("ended");
}

TEST_F(PagePermission, RefusalIsRemembered) {
    listen();
    user.awaitDrawn(rig::label(question));
    user.answerAlert("Don’t Allow");
    awaitHeading("NotAllowedError");
    startAgain();
    listen();
    awaitHeading("NotAllowedError");
    EXPECT_FALSE(questionIsOpen());
}

TEST_F(PagePermission, EscapeRefusesThisOnce) {
    listen();
    user.awaitDrawn(rig::label(question));
    user.press("Escape");
    awaitHeading("NotAllowedError");
    startAgain();
    listen();
    user.awaitDrawn(rig::label(question));
}

TEST_F(PagePermission, ClickOnANotificationOpensTheWindowAndReachesThePage) {
    tests::DesktopOnBus notified(/*hasTray=*/true);
    showPage("https://localhost:8443/notify");
    user.click(rig::pageButton("Notify"));
    user.awaitDrawn(rig::label("Allow localhost to show notifications?"));
    look("question");
    user.answerAlert("Allow");
    desktop().tree.awaitThat("the notification is shown", [&] { return !notified.shown.empty(); });
    EXPECT_EQ(notified.shown, std::vector<std::string>{"Dinner"});
    EXPECT_EQ(notified.body, "At eight");
    awaitHeading("granted");

    closeWindow();
    notified.press("default", "token-of-the-click");
    awaitHeading("Clicked");
    EXPECT_EQ(desktop().screen.windows.text(mainWindow()->identifier, "_NET_STARTUP_ID"),
              "token-of-the-click");
}

} // namespace kelo::e2e
