// What pages say and ask in dialogs, and before they are left: in the program, with real keys.
#include "e2e/VoiceProgramFixture.h"

namespace kelo::e2e {

namespace {

constexpr std::chrono::seconds patience{30};

constexpr const char* askingPage = R"page(<!doctype html><title>Page</title>
<style>html { color-scheme: light dark; font: 15px sans-serif }</style>
<h1>Asks</h1><p id="heard">nothing</p>
<button onclick="while (!stopped()) alert('Once more');">Alert</button>
<button onclick="say(confirm('Delete the conversation?'))">Confirm</button>
<button onclick="say(prompt('What is your name?', 'Ann'))">Prompt</button>
<label>Note <input id="note"></label>
<script>
let before = 0;
// An alert that nobody sees is answered at once.
const stopped = () => { const now = Date.now(); const fast = now - before < 20; before = now; return fast; };
const say = (what) => document.querySelector('h1').textContent = 'Heard ' + what;
addEventListener('keydown', (event) => {
  if (event.key === 'p') say(prompt('What is your name?', 'Ann'));
});
addEventListener('beforeunload', (event) => {
  if (document.getElementById('note').value) event.preventDefault();
});
</script>)page";

/// Asks for the key "a". After the key "b" it asks when it leaves the screen.
constexpr const char* askingWidget = R"page(<!doctype html><h1>Waits</h1>
<script>
const say = (what) => document.querySelector('h1').textContent = 'Heard ' + what;
addEventListener('keydown', (event) => {
  if (event.key === 'a') say(confirm('Shall I?'));
  if (event.key === 'b') {
    say('the wish');
    document.addEventListener('visibilitychange', () => {
      if (document.hidden) navigator.sendBeacon('/hidden?' + confirm('Is anybody there?'));
    });
  }
});
</script>)page";

class PageDialog : public VoiceProgramFixture {
protected:
    void SetUp() override {}

    void show() {
        // The demo service makes the certificate that its stand-in uses as well.
        startService();
        standIn({{"/", askingPage}});
        startKelo();
        desktop().tree.await(rig::pageHeading("Asks"));
    }
    rig::ScreenWindow showPanel() {
        VoiceProgramFixture::SetUp();
        standIn({{"/widget", askingWidget}});
        const auto shown = tapToShow();
        awaitKeyboard(shown);
        user.awaitDrawn(rig::pageHeading("Waits"), shown.identifier);
        return shown;
    }
    void enterNote() const { user.typeInto(rig::pageField("Note"), "x"); }
    void awaitDialog(const std::string& name) const {
        desktop().tree.await(rig::label(name));
        user.awaitDrawn(rig::button(name == leaving ? "Stay" : "OK"));
    }
    /// Presses the key until this holds: a dialog that has just appeared takes no answer.
    void press(const std::string& key, const std::string& name,
               const std::function<bool()>& hasHadEffect) const {
        awaitDialog(name);
        desktop().tree.awaitThat("the dialog has taken " + key, [&] {
            if (hasHadEffect())
                return true;
            const auto active = desktop().screen.windows.active();
            if (active && active->title == name)
                user.press(key);
            return false;
        });
    }
    void answer(const std::string& name, const std::string& key) const {
        press(key, name, [&] { return !desktop().tree.find(rig::label(name)); });
    }
    void awaitEnd() const { EXPECT_EQ(kelo->awaitExit(patience), 0) << kelo->printed(); }

    const rig::Wanted mainPage{rig::Place::windows, {rig::Role::widget}, "Web page"};
    const std::string says = "localhost:8443 says";
    const std::string leaving = "Leave this page?";
};

} // namespace

TEST_F(PageDialog, ConfirmIsAnsweredByKeys) {
    show();
    user.click(rig::pageButton("Confirm"));
    awaitDialog(says);
    look("confirm");
    answer(says, "Return");
    desktop().tree.await(rig::pageHeading("Heard true"));
    user.click(rig::pageButton("Confirm"));
    answer(says, "Escape");
    desktop().tree.await(rig::pageHeading("Heard false"));
}

TEST_F(PageDialog, PromptIsFilledIn) {
    show();
    user.click(rig::pageButton("Prompt"));
    awaitDialog(says);
    for (const char* key : {"e", "v", "a"})
        user.press(key);
    look("prompt");
    answer(says, "Return");
    desktop().tree.await(rig::pageHeading("Heard eva"));
}

TEST_F(PageDialog, EndlessAlertsAreStopped) {
    show();
    user.click(rig::pageButton("Alert"));
    awaitDialog(says);
    const rig::Wanted refusal{
        rig::Place::windows, {rig::Role::checkBox}, "Do not let this page ask again"};
    user.clickUntil("the page may be silenced", rig::button("OK"),
                    [&] { return desktop().tree.find(refusal).has_value(); });
    user.click(refusal);
    look("refused");
    user.clickUntil("the dialog is gone", rig::button("OK"),
                    [&] { return !desktop().tree.find(rig::label(says)); });
    user.click(rig::pageButton("Confirm"));
    desktop().tree.await(rig::pageHeading("Heard false"));
}

TEST_F(PageDialog, OnALargeDarkScreenLooksAlike) {
    environment = {{"GDK_SCALE", "2"}, {"GTK_THEME", "Default:dark"}};
    show();
    awaitThat("the page has the keyboard", [&] {
        const auto page = desktop().tree.find(mainPage);
        return page && page->isFocused();
    });
    user.press("p");
    awaitDialog(says);
    look("prompt");
    answer(says, "Return");
    desktop().tree.await(rig::pageHeading("Heard Ann"));
}

TEST_F(PageDialog, QuitIsUpToTheUserIfThePageObjects) {
    show();
    enterNote();
    desktop().screen.press("q", {"Control_L"});
    awaitDialog(leaving);
    look("leaving");
    answer(leaving, "Escape");
    EXPECT_TRUE(kelo->isRunning());
    desktop().tree.await(rig::pageHeading("Asks"));
    user.chooseFromMenu("Kelo", "Quit");
    answer(leaving, "Return");
    awaitEnd();
}

TEST_F(PageDialog, QuitOfAClosedWindowAsksAsWellAndShowsThePageThatStays) {
    show();
    enterNote();
    desktop().screen.windows.tellManager(mainWindow()->identifier, "_NET_CLOSE_WINDOW");
    awaitThat("the window is closed", [&] { return !mainWindow(); });
    const auto quit = [this] {
        rig::KeloProcess second(build(), folder.path(), folder.path() / "second.log", {"--quit"});
        EXPECT_EQ(second.awaitExit(patience), 0) << second.printed();
    };
    quit();
    awaitDialog(leaving);
    answer(leaving, "Escape");
    desktop().tree.await(rig::pageHeading("Asks"));
    EXPECT_TRUE(kelo->isRunning());
    quit();
    answer(leaving, "Return");
    awaitEnd();
}

TEST_F(PageDialog, OfThePanelStandsInItsPlaceAndGivesItTheKeyboardBack) {
    const auto shown = showPanel();
    user.press("a");
    awaitDialog(says);
    look("dialog");
    answer(says, "Return");
    user.awaitDrawn(rig::pageHeading("Heard true"), shown.identifier);
    awaitKeyboard(shown);
}

TEST_F(PageDialog, OfThePanelGoesWithItAndNoneComesFromAHiddenOne) {
    const auto shown = showPanel();
    user.press("a");
    awaitDialog(says);
    tapToHide();
    desktop().tree.awaitGone(rig::label(says));
    const auto again = tapToShow();
    awaitKeyboard(again);
    user.awaitDrawn(rig::pageHeading("Waits"), again.identifier);
    user.press("b");
    user.awaitDrawn(rig::pageHeading("Heard the wish"), again.identifier);
    tapToHide();
    awaitAsked(*pages, "/hidden?false");
    EXPECT_FALSE(desktop().tree.find(rig::label(says)));
}

TEST_F(PageDialog, QuitWithAnOpenDialogNeedsNoAnswerToIt) {
    show();
    user.click(rig::pageButton("Alert"));
    awaitDialog(says);
    rig::KeloProcess second(build(), folder.path(), folder.path() / "second.log", {"--quit"});
    EXPECT_EQ(second.awaitExit(patience), 0) << second.printed();
    awaitEnd();
}

} // namespace kelo::e2e
