#include "component/webkit/FakeSettingsManager.h"
#include "component/webkit/MainWindowFixture.h"
#include "testing/screen/Picture.h"

#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <utility>

namespace kelo::test {

namespace {

constexpr std::uint32_t caretColor = 0xff0000;
constexpr int blinkTime = 100; // ms, the shortest there is: a caret comes and goes in it
constexpr int never = std::numeric_limits<int>::max();

/// Whether carets blink, and in how many milliseconds.
using Blinking = std::pair<bool, int>;

Blinking blinkingNow() {
    gboolean blinks = FALSE;
    int time = 0;
    g_object_get(gtk_settings_get_default(), "gtk-cursor-blink", &blinks, "gtk-cursor-blink-time",
                 &time, nullptr);
    return {blinks != FALSE, time};
}

FakeSettingsManager::Values values(bool blinks, int time, int timeout = 10) {
    return {{"Net/CursorBlink", blinks},
            {"Net/CursorBlinkTime", time},
            {"Gtk/CursorBlinkTimeout", timeout}};
}

/// How often the threads of this process that follow the screen's refreshes have slept.
unsigned long refreshes() {
    unsigned long sum = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream status(thread.path() / "status");
        std::string key;
        std::string value;
        bool follows = false;
        while (status >> key && std::getline(status, value)) {
            if (key == "Name:")
                follows = value.find("VBlank") != std::string::npos;
            else if (key == "voluntary_ctxt_switches:" && follows)
                sum += std::stoul(value);
        }
    }
    return sum;
}

} // namespace

/// A page whose field has the keyboard, for a user with settings of their own.
class SteadyCaret : public MainWindowFixture {
protected:
    void setUser(const FakeSettingsManager::Values& user) {
        desktop.emplace(user);
        ASSERT_TRUE(
            waitForBlinking({user.at("Net/CursorBlink") != 0, user.at("Net/CursorBlinkTime")}));
    }
    void openFor(const FakeSettingsManager::Values& user) {
        setUser(user);
        openInMainWindow({{"/", R"(<body><input id=field autofocus style="font-size: 40px;
            width: 300px; outline: none; border: none; caret-color: #f00">)"}});
        ASSERT_TRUE(waitForScript("document.activeElement.id", "field"));
        place = placeOf("#field");
        ASSERT_TRUE(loop.runUntil([this] { return caretIsShown(); }));
    }

    /// The engine looks after the caret anew with what it draws next.
    void type() {
        press("a");
        ASSERT_TRUE(waitForScript("document.getElementById('field').value", "a"));
    }

    bool caretIsShown() const {
        constexpr int width = 310;
        constexpr int height = 40;
        const screen::Picture field(connection, place.x - width / 2, place.y - height / 2, width,
                                    height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (field.color(x, y) == caretColor)
                    return true;
        return false;
    }

    struct Second {
        int looks = 0;
        int withoutCaret = 0;
        int frames = 0;
        unsigned long refreshes = 0;
    };
    /// Watches the caret until the page's clock says that a second is over: ten blinks.
    Second watchForASecond() {
        Second seen;
        GdkFrameClock* const clock = gtk_widget_get_frame_clock(GTK_WIDGET(native()));
        const auto counted = gobject::connectSignal(
            clock, "after-paint", +[](GdkFrameClock*, Second* seen) { ++seen->frames; }, &seen);
        const auto before = refreshes();
        const std::string over = "over " + std::to_string(++seconds);
        evaluate("setTimeout(() => { document.title = '" + over + "' }, 1000); 1");
        EXPECT_TRUE(loop.runUntil([&] {
            ++seen.looks;
            seen.withoutCaret += caretIsShown() ? 0 : 1;
            return g_strcmp0(webkit_web_view_get_title(native()), over.c_str()) == 0;
        }));
        seen.refreshes = refreshes() - before;
        return seen;
    }

    bool waitForBlinking(const Blinking& expected) {
        return loop.runUntil([&] { return blinkingNow() == expected; });
    }

    std::optional<FakeSettingsManager> desktop;
    screen::Point place{};
    int seconds = 0; ///< how many have been watched
};

TEST_F(SteadyCaret, OfAPageIsShownAndDoesNotBlink) {
    openFor(values(true, blinkTime));
    const Second seen = watchForASecond();
    EXPECT_GT(seen.looks, 20);
    EXPECT_EQ(seen.withoutCaret, 0);
}

TEST_F(SteadyCaret, HasNothingDrawnAndNobodyWokenWhileNothingChanges) {
    openFor(values(true, blinkTime));
    watchForASecond(); // what the page's arrival had begun ends
    const Second seen = watchForASecond();
    EXPECT_LE(seen.frames, 4) << "a new title is drawn, and the caret would be 20 times";
    EXPECT_LE(seen.refreshes, 10U) << "60 times a second is always";
}

TEST_F(SteadyCaret, IsShownWhereTheUserHasMovedIt) {
    openFor(values(true, blinkTime));
    press("a");
    press("b");
    press("Left");
    ASSERT_TRUE(waitForScript("document.getElementById('field').selectionStart", "1"));
    EXPECT_EQ(watchForASecond().withoutCaret, 0);
}

TEST_F(SteadyCaret, DoesNotKeepTheEngineAwakeForAUserWhoWantsNoBlinking) {
    // However long they would have it blink.
    openFor(values(false, blinkTime, 3600));
    type();
    watchForASecond();
    const Second seen = watchForASecond();
    EXPECT_EQ(seen.withoutCaret, 0);
    EXPECT_LE(seen.refreshes, 10U) << "60 times a second is always";
}

TEST_F(SteadyCaret, BlinksForAUserWhoLetsCaretsBlinkForLong) {
    openFor(values(true, blinkTime, 61));
    EXPECT_EQ(blinkingNow(), Blinking(true, blinkTime));
    EXPECT_GT(watchForASecond().withoutCaret, 0);
    desktop->change(values(true, blinkTime, 60));
    EXPECT_TRUE(waitForBlinking({true, never}));
    desktop->change(values(true, blinkTime, 61));
    EXPECT_TRUE(waitForBlinking({true, blinkTime}));
}

TEST_F(SteadyCaret, LeavesTextFieldsOfOurOwnTheUsersValues) {
    openFor(values(true, blinkTime));
    EXPECT_EQ(blinkingNow(), Blinking(true, never));
    press("f", {"Control_L"});
    ASSERT_TRUE(waitForBlinking({true, blinkTime}));
    press("Escape");
    ASSERT_TRUE(waitForBlinking({true, never}));
    ASSERT_TRUE(waitForScript("document.hasFocus()", "true"));
    ASSERT_TRUE(loop.runUntil([this] { return caretIsShown(); }));
    EXPECT_EQ(watchForASecond().withoutCaret, 0);
}

TEST_F(SteadyCaret, KnowsWhatTheUserChangesMeanwhile) {
    openFor(values(true, blinkTime));
    desktop->change(values(false, 700));
    press("f", {"Control_L"});
    EXPECT_TRUE(waitForBlinking({false, 700}));
    press("Escape");
    EXPECT_TRUE(waitForBlinking({true, never}));
    // Only one who wants blinking at all has carets blink for long.
    desktop->change(values(false, 700, 3600));
    settle();
    desktop->change(values(true, 700, 3600));
    EXPECT_TRUE(waitForBlinking({true, 700}));
}

TEST_F(SteadyCaret, BeginsWithTheSession) {
    setUser(values(true, blinkTime));
    server = site({});
    sessionFor(server->url());
    EXPECT_EQ(blinkingNow(), Blinking(true, never));
}

TEST_F(SteadyCaret, EndsWithTheSession) {
    openFor(values(true, blinkTime));
    window->leaveWebView();
    window.reset();
    endSession();
    EXPECT_EQ(blinkingNow(), Blinking(true, blinkTime));
    // The windows of another time are nothing to it.
    GtkWidget* const other = gtk_window_new();
    gtk_window_present(GTK_WINDOW(other));
    EXPECT_TRUE(loop.runUntil([&] { return gtk_window_is_active(GTK_WINDOW(other)); }));
    EXPECT_EQ(blinkingNow(), Blinking(true, blinkTime));
    gtk_window_destroy(GTK_WINDOW(other));
}

} // namespace kelo::test
