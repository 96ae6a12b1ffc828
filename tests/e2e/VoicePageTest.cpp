// The widget's page in the panel: who it is for, what it may do, and what it cannot break.
#include "e2e/VoiceProgramFixture.h"

#include <algorithm>
#include <csignal>

namespace kelo::e2e {

namespace {

/// Tells the service which keys it gets, and has a field to type into.
constexpr const char* keyPage = R"(<!doctype html><title>Keys</title>
<h1>Voice</h1><label>Note <input id="note" autofocus></label>
<script>
addEventListener('keydown', (event) => navigator.sendBeacon('/key?' + event.key), true);
addEventListener('keyup', (event) => navigator.sendBeacon('/up?' + event.key), true);
navigator.sendBeacon('/ready');
</script>)";

/// Tells the page around it, which shows it, whether it got the microphone.
constexpr const char* foreignPage = R"(<!doctype html><body style="font: 15px sans-serif">
<p id="answer">A foreign frame asks for the microphone…</p>
<script>
const tell = (text) => { document.getElementById('answer').textContent = text; parent.postMessage(text, '*'); };
const handlers = window.webkit && window.webkit.messageHandlers;
try { if (handlers && handlers.kelo) handlers.kelo.postMessage('close'); } catch (error) {}
if (!navigator.mediaDevices) tell('no-devices');
else navigator.mediaDevices.getUserMedia({ audio: true }).then(() => tell('granted'), (error) => tell(error.name));
</script>)";

/// A page that holds the other one in a frame of an origin of its own.
std::string pageWithFrame(std::string framed) {
    for (std::size_t at = 0; (at = framed.find('"', at)) != std::string::npos;)
        framed.replace(at, 1, "&quot;");
    return R"(<!doctype html><body style="background: #fff; font: 15px sans-serif"><h1>Voice</h1>
<p id="answer">waiting</p><iframe sandbox="allow-scripts" allow="microphone" srcdoc=")" +
           framed + R"("></iframe>
<script>
addEventListener('message', (event) => {
  document.getElementById('answer').textContent = event.data;
  navigator.sendBeacon('/answer?' + event.data);
});
</script>)";
}

class VoicePage : public VoiceProgramFixture {
protected:
    /// Shows the panel and kills the process that draws its page. The engine starts another one
    /// along with it, for the next page of any view; which is which cannot be told, so both go.
    void showAndKillPage() {
        user.awaitLoginPage();
        const auto before = webProcesses();
        awaitWidgetPage(tapToShow());
        for (const pid_t process : webProcesses()) {
            const bool isNew = std::ranges::find(before, process) == before.end();
            ASSERT_TRUE(!isNew || kill(process, SIGKILL) == 0);
        }
        // Kelo learns of it a moment later than the kernel's list of processes.
        desktop().tree.await(rig::pageHeading("This page stopped working"));
    }
};

} // namespace

TEST_F(VoicePage, ClosesThePanelByItsOwnButton) {
    const auto shown = tapToShow();
    awaitWidgetPage(shown);
    clickInPanel(shown, rig::pageButton("Close"));
    awaitNoPanel();
    // And it is an ordinary close: the next tap shows it again.
    awaitWidgetPage(tapToShow());
}

TEST_F(VoicePage, IsSignedInAfterANativeSignIn) {
    user.awaitLoginPage();
    becomeOwnerOfPasskey(ada);
    user.pressSignInWithPasskey();
    user.confirmSheet(desktop().loginPassword);
    user.awaitSignedIn("Ada");
    const auto shown = tapToShow();
    awaitWidgetPage(shown);
    awaitThat("the widget's page says who is signed in",
              [&] { return desktop().tree.pageSays("Signed in as Ada Lovelace"); });
    picture("signed-in");
}

TEST_F(VoicePage, IsLoadedAnewByEachShowFromHiddenAndOnlyThen) {
    auto& service = standIn({{"/widget", keyPage}});
    const auto loads = [&] { return std::ranges::count(service.requests(), "/widget"); };
    awaitKeyboard(tapToShow());
    awaitAsked(service, "/ready");
    EXPECT_EQ(loads(), 1);
    holdChord();
    awaitThat("the chord has reached the page", [&] { return service.wasAsked("/key?Alt"); });
    tapToHide();
    EXPECT_EQ(loads(), 1);
    awaitKeyboard(tapToShow());
    awaitThat("the page is loaded again", [&] { return loads() == 2; });
}

TEST_F(VoicePage, IsLeftAloneByShortcutsOfOtherProgramsThatBeginLikeTheChord) {
    auto& service = standIn({{"/widget", keyPage}});
    screen::OtherProgram other;
    goTo(other);
    for (const char* const key : {"t", "Left"})
        holdChord(key);
    // Had one of them shown the panel, the tap would hide it, and the page would be loaded twice.
    awaitKeyboard(tapToShow());
    awaitAsked(service, "/ready");
    tapToHide();
    EXPECT_EQ(std::ranges::count(service.requests(), "/widget"), 1);
}

TEST_F(VoicePage, GetsTheTextThatIsTypedButNotTheEscape) {
    auto& service = standIn({{"/widget", keyPage}});
    const auto shown = tapToShow();
    awaitKeyboard(shown);
    awaitAsked(service, "/ready");
    awaitThat("the page's field has the keyboard", [&] {
        const auto field = desktop().tree.find(rig::pageField("Note"));
        return field && field->isFocused();
    });
    desktop().screen.keyboard.type("Hello");
    awaitThat("the text stands in the page's field", [&] {
        const auto field = desktop().tree.find(rig::pageField("Note"));
        return field && field->text() == "Hello";
    });
    picture("typed");
    user.press("Escape");
    awaitNoPanel();
    // What the page tells arrives in order: with the next key here, an Escape would be here, too.
    awaitKeyboard(tapToShow());
    awaitThat("the page is there again",
              [&] { return std::ranges::count(service.requests(), "/ready") == 2; });
    desktop().screen.keyboard.type("z");
    awaitAsked(service, "/key?z");
    EXPECT_FALSE(service.wasAsked("/key?Escape"));
}

TEST_F(VoicePage, LeavesAPanelThatClosesByEscapeWhenItsProcessDies) {
    showAndKillPage();
    picture("dead");
    user.press("Escape");
    awaitNoPanel();
    awaitWidgetPage(tapToShow());
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(VoicePage, LeavesAPanelThatClosesByATapWhenItsProcessDies) {
    showAndKillPage();
    tapToHide();
    awaitWidgetPage(tapToShow());
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(VoicePage, LeavesAPanelThatClosesWhenItHangs) {
    auto& service = standIn({{"/widget", R"(<h1>Voice</h1><script>
addEventListener('load', () => setTimeout(() => { fetch('/hanging'); setTimeout(() => { for (;;); }, 100); }, 0));
</script>)"}});
    const auto shown = tapToShow();
    awaitKeyboard(shown);
    awaitAsked(service, "/hanging");
    user.press("Escape");
    awaitNoPanel();
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(VoicePage, ThatDoesNotLoadLeavesAPanelThatClosesAndIsFreshLater) {
    service.reset();
    const auto shown = tapToShow();
    awaitKeyboard(shown);
    picture("unreachable");
    user.press("Escape");
    awaitNoPanel();
    startService();
    awaitWidgetPage(tapToShow());
}

// A frame from another host needs that host's certificate trusted; the web view's own tests have
// one.
TEST_F(VoicePage, WithAForeignFrameGivesItNoMicrophoneAndLetsItCloseNothing) {
    service.reset();
    service = std::make_unique<rig::DemoService>(build(), authority, folder.path() / "service.log",
                                                 "", std::vector<std::string>{"--stranger"});
    const auto shown = tapToShow();
    awaitWidgetPage(shown);
    const auto awaitAnswer = [&](const std::string& answer) {
        awaitThat("the stranger says so", [&] { return desktop().tree.pageSays(answer); });
    };
    awaitAnswer("The stranger has tried nothing yet.");
    clickInPanel(shown, rig::pageButton("Listen in"));
    awaitAnswer("The stranger was refused.");
    picture("refused");
    clickInPanel(shown, rig::pageButton("Close the panel"));
    awaitAnswer("The stranger found nobody to tell.");
    EXPECT_TRUE(isPanelShown());
    picture("still-there");
}

TEST_F(VoicePage, WithAFrameThatAsksUnaskedGivesItNothing) {
    auto& service = standIn({{"/widget", pageWithFrame(foreignPage)}});
    const auto shown = tapToShow();
    awaitThat("the frame has its answer", [&] {
        return std::ranges::any_of(service.requests(), [](const std::string& request) {
            return request.starts_with("/answer?");
        });
    });
    EXPECT_TRUE(service.wasAsked("/answer?NotAllowedError"))
        << testing::PrintToString(service.requests());
    EXPECT_TRUE(isPanelShown());
    awaitPlace(shown, placeOn(wholeScreen()));
}

} // namespace kelo::e2e
