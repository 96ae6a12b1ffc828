#include "component/webkit/MainWindowFixture.h"
#include "linux/window/HostedPage.h"
#include "linux/window/PageControls.h"

#include <gmock/gmock.h>
#include <gtkmm/label.h>
#include <gtkmm/searchentry.h>

namespace kelo::test {

using testing::ElementsAre;

/// The keys and the mouse of the main window, with a real page that hears them first.
class ViewCommands : public MainWindowFixture {
protected:
    void SetUp() override {
        openInMainWindow({{"/", R"(<title>first</title><body>one two <b>One</b> three
            <a id=next href=/next>next</a><script>
            taken = '';
            onkeydown = (event) => { if (event.key === taken) event.preventDefault(); };
            </script>)"},
                          {"/next", "<title>next</title>"}});
    }
    void goToNext() {
        evaluate("location = '/next'; 1");
        ASSERT_TRUE(waitForTitle("next"));
    }
    template <typename Kind>
    Kind* visible(Gtk::Widget& root) {
        for (auto* child = root.get_first_child(); child; child = child->get_next_sibling()) {
            if (!child->get_mapped())
                continue;
            if (auto* found = dynamic_cast<Kind*>(child))
                return found;
            if (auto* found = visible<Kind>(*child))
                return found;
        }
        return nullptr;
    }
    bool isFinding() { return visible<Gtk::SearchEntry>(*window) != nullptr; }
    bool says(Gtk::Widget& root, const std::string& text) {
        for (auto* child = root.get_first_child(); child; child = child->get_next_sibling()) {
            const auto* label = dynamic_cast<Gtk::Label*>(child);
            if ((label && label->get_text().raw() == text) || says(*child, text))
                return true;
        }
        return false;
    }
    screen::Point middleOfPage() { return placeOf("html"); }
};

TEST_F(ViewCommands, WindowHasThePagesTitle) {
    EXPECT_TRUE(loop.runUntil([this] { return window->get_title() == "first – Kelo"; }));
    goToNext();
    EXPECT_TRUE(loop.runUntil([this] { return window->get_title() == "next – Kelo"; }));
    evaluate("document.title = ''; 1");
    EXPECT_TRUE(loop.runUntil([this] { return window->get_title() == "Kelo"; }));
}

TEST_F(ViewCommands, LoadHasProgressUntilThePageIsHere) {
    struct Seen {
        window::PageControls& controls;
        std::vector<bool> loads;
    } seen{dynamic_cast<window::HostedPage&>(*view).controls(), {}};
    EXPECT_FALSE(seen.controls.loadProgress());
    const auto connection = gobject::connectSignal(
        native(), "notify::is-loading",
        +[](WebKitWebView*, GParamSpec*, Seen* seen) {
            seen->loads.push_back(seen->controls.loadProgress().has_value());
        },
        &seen);
    evaluate("location = '/next'; 1");
    EXPECT_TRUE(loop.runUntil([&] { return seen.loads.size() == 2; }));
    EXPECT_THAT(seen.loads, ElementsAre(true, false));
}

TEST_F(ViewCommands, ReloadKeyLoadsThePageAgain) {
    const auto before = recorder->finished.size();
    press("F5");
    EXPECT_TRUE(waitForFinished(before + 1));
    press("r", {"Control_L", "Shift_L"});
    EXPECT_TRUE(waitForFinished(before + 2));
}

TEST_F(ViewCommands, ReloadSendsNoFormAgain) {
    evaluate("document.body.innerHTML = '<form method=post action=/next></form>';"
             "document.forms[0].submit(); 1");
    ASSERT_TRUE(waitForTitle("next"));
    const auto methods = [this] {
        std::vector<std::string> all;
        for (const auto& request : server->requests())
            if (request.target == "/next")
                all.push_back(request.method);
        return all;
    };
    ASSERT_THAT(methods(), ElementsAre("POST"));
    press("F5");
    ASSERT_TRUE(loop.runUntil([&] { return methods().size() == 2; }));
    press("F5", {"Control_L"});
    ASSERT_TRUE(loop.runUntil([&] { return methods().size() == 3; }));
    EXPECT_THAT(methods(), ElementsAre("POST", "GET", "GET"));
}

TEST_F(ViewCommands, KeysGoThroughTheHistory) {
    goToNext();
    press("Left", {"Alt_L"});
    ASSERT_TRUE(waitForTitle("first"));
    press("Right", {"Alt_L"});
    ASSERT_TRUE(waitForTitle("next"));
    press("Home", {"Alt_L"});
    EXPECT_TRUE(waitForTitle("first"));
}

TEST_F(ViewCommands, MouseButtonsGoThroughTheHistory) {
    goToNext();
    const auto place = middleOfPage();
    pointer.click(place, 8);
    ASSERT_TRUE(waitForTitle("first"));
    settle();
    EXPECT_EQ(evaluate("history.length"), "2");
    pointer.click(place, 9);
    EXPECT_TRUE(waitForTitle("next"));
}

TEST_F(ViewCommands, BackFollowsWhatAScriptAddsToTheHistory) {
    evaluate("history.pushState({}, '', '/pushed'); 1");
    ASSERT_TRUE(loop.runUntil([this] { return webkit_web_view_can_go_back(native()) != FALSE; }));
    press("Left", {"Alt_L"});
    EXPECT_TRUE(waitForScript("location.pathname", "/"));
}

TEST_F(ViewCommands, PageMayTakeTheKeyOfFind) {
    evaluate("taken = 'f'; 1");
    press("f", {"Control_L"});
    settle();
    EXPECT_FALSE(isFinding());
    evaluate("taken = ''; 1");
    press("f", {"Control_L"});
    EXPECT_TRUE(loop.runUntil([this] { return isFinding(); }));
}

TEST_F(ViewCommands, FindCountsAndMarksInAnyCase) {
    press("f", {"Control_L"});
    ASSERT_TRUE(loop.runUntil([this] { return isFinding(); }));
    for (const char* const key : {"o", "n", "e"})
        press(key);
    EXPECT_TRUE(loop.runUntil([this] { return says(*window, "2 places"); }));
    press("Return");
    settle();
    press("Escape");
    ASSERT_TRUE(loop.runUntil([this] { return !isFinding(); }));
    EXPECT_TRUE(waitForScript("getSelection().toString().toLowerCase()", "one"));
}

TEST_F(ViewCommands, FindSaysWhatIsNotThere) {
    press("f", {"Control_L"});
    ASSERT_TRUE(loop.runUntil([this] { return isFinding(); }));
    for (const char* const key : {"x", "y", "z"})
        press(key);
    EXPECT_TRUE(loop.runUntil([this] { return says(*window, "Not found"); }));
}

TEST_F(ViewCommands, ZoomMakesThePageLarger) {
    const double width = std::stod(evaluate("innerWidth"));
    press("equal", {"Control_L"});
    ASSERT_TRUE(loop.runUntil([&] { return std::stod(evaluate("innerWidth")) < width; }));
    press("0", {"Control_L"});
    EXPECT_TRUE(loop.runUntil([&] { return std::stod(evaluate("innerWidth")) == width; }));
}

} // namespace kelo::test
