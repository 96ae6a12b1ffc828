// A page that does not answer any more: the user can leave it, load it again, and quit.
#include "e2e/VoiceProgramFixture.h"

#include <algorithm>
#include <csignal>

namespace kelo::e2e {

namespace {

constexpr std::chrono::seconds patience{30};

/// Never answers again from its first click or key on, and is another page when it is loaded again.
constexpr const char* hangingPage = R"page(<!doctype html><title>Page</title>
<style>html { color-scheme: light dark; font: 15px sans-serif }</style>
<h1 id="heading">Hangs</h1><p>What was typed is lost when this page is loaded again.</p>
<button onclick="hang()">Compute</button>
<script>
const hang = () => { while (true) {} };
addEventListener('keydown', hang);
if (localStorage.loaded) {
  document.getElementById('heading').textContent = 'Works';
  removeEventListener('keydown', hang);
}
localStorage.loaded = 'once';
</script>)page";

/// Hangs by itself, and is another page when it is loaded again.
constexpr const char* hangingWidget = R"(<!doctype html><h1 id="heading">Hangs</h1><script>
if (localStorage.hung) document.getElementById('heading').textContent = 'Works';
else addEventListener('load', () => setTimeout(() => {
  localStorage.hung = 'once';
  const request = new XMLHttpRequest();
  request.open('GET', '/hanging', false);
  try { request.send(); } finally { while (true) {} }
}, 0));
</script>)";

class HungPage : public VoiceProgramFixture {
protected:
    void SetUp() override {}

    void showPage() {
        // The demo service makes the certificate that its stand-in uses as well.
        startService();
        standIn({{"/", hangingPage}});
        startKelo();
        desktop().tree.await(rig::pageHeading("Hangs"));
    }
    void hangByClicks() {
        showPage();
        user.click(rig::pageButton("Compute"));
        // The page takes the first click, and not the second.
        const rig::Area area = user.awaitDrawn(mainPage);
        desktop().screen.pointer.click({area.corner.x + area.width / 2, area.corner.y + 300});
        desktop().tree.await(bar);
        user.awaitDrawn(rig::button("Wait"));
    }
    void hangByKeys() {
        showPage();
        awaitThat("the page has the keyboard", [&] {
            const auto page = desktop().tree.find(mainPage);
            return page && page->isFocused();
        });
        user.press("a");
        user.press("a");
        desktop().tree.await(bar);
    }
    void hangInPanel() {
        VoiceProgramFixture::SetUp();
        auto& service = standIn({{"/widget", hangingWidget}});
        awaitKeyboard(tapToShow());
        awaitAsked(service, "/hanging");
    }
    void quit() const {
        const auto processes = webProcesses();
        EXPECT_FALSE(processes.empty());
        user.chooseFromMenu("Kelo", "Quit");
        EXPECT_EQ(kelo->awaitExit(patience), 0) << kelo->printed();
        awaitThat("the pages' processes are gone", [&processes] {
            return std::ranges::all_of(processes,
                                       [](pid_t process) { return kill(process, 0) != 0; });
        });
    }
    const rig::Wanted mainPage{rig::Place::windows, {rig::Role::widget}, "Web page"};
    const rig::Wanted bar = rig::alert("This page does not answer.");
};

} // namespace

TEST_F(HungPage, HasABarThatLoadsItAgain) {
    hangByClicks();
    picture("bar");
    user.click(rig::button("Reload"));
    user.awaitDrawn(rig::pageHeading("Works"));
    desktop().tree.awaitGone(bar);
}

TEST_F(HungPage, OnALargeDarkScreenIsLoadedAgainByKeys) {
    environment = {{"GDK_SCALE", "2"}, {"GTK_THEME", "Default:dark"}};
    hangByKeys();
    const auto awaitFocus = [&](const char* name) {
        awaitThat(std::string(name) + " has the keyboard", [&] {
            const auto found = desktop().tree.find(rig::button(name));
            return found && found->isFocused();
        });
    };
    user.press("F6");
    awaitFocus("Wait");
    user.press("Tab");
    awaitFocus("Reload");
    picture("bar");
    user.press("space");
    desktop().tree.await(rig::pageHeading("Works"));
    desktop().tree.awaitGone(bar);
}

TEST_F(HungPage, DoesNotKeepTheProgram) {
    hangByClicks();
    quit();
}

TEST_F(HungPage, InThePanelDoesNotKeepTheProgram) {
    hangInPanel();
    tapToHide();
    quit();
}

TEST_F(HungPage, InThePanelIsFreshWhenThePanelIsShownAgain) {
    hangInPanel();
    tapToHide();
    const auto shown = tapToShow();
    awaitKeyboard(shown);
    user.awaitDrawn(rig::pageHeading("Works"), shown.identifier);
    EXPECT_EQ(std::ranges::count(pages->requests(), "/widget"), 2);
}

} // namespace kelo::e2e
