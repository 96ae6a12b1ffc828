#include "component/gtk/RunningProgram.h"
#include "linux/gtk/update/GtkUserDriver.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/button.h>
#include <gtkmm/progressbar.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/spinner.h>
#include <gtkmm/textview.h>

#include <algorithm>

namespace kelo::tests {
namespace {

using updater::CheckKind;
using updater::RelaunchChoice;
using updater::UpdateChoice;

constexpr const char* title = "Software Update";

template <typename T>
using Result = std::shared_ptr<std::optional<T>>;

template <typename T>
Task<void> follow(Task<T> task, Result<T> result) {
    *result = co_await task;
}

template <typename T>
Result<T> start(Task<T> task) {
    auto result = std::make_shared<std::optional<T>>();
    spawn(follow(std::move(task), result));
    return result;
}

Task<bool> thenTrue(Task<void> task) {
    co_await task;
    co_return true;
}

class UpdateWindows : public testing::Test {
protected:
    void run(const std::function<void()>& body) {
        program.run([&] {
            driver = std::make_unique<gtk::GtkUserDriver>(
                [this](const std::string& address) { opened.push_back(address); });
            body();
            driver.reset();
        });
    }
    Gtk::Window& window() {
        auto& found = program.window(title);
        program.untilActive(found);
        return found;
    }
    Gtk::Label& shownNotes() {
        for (auto* frame : visibleIn<Gtk::ScrolledWindow>(window()))
            if (isNamed(*frame, "Release notes"))
                return *visibleIn<Gtk::Label>(*frame).front();
        throw std::runtime_error("There are no release notes.");
    }
    bool says(const std::string& text) {
        const auto texts = textsIn(program.window(title));
        return std::count(texts.begin(), texts.end(), text) > 0;
    }
    void click(const std::string& label) {
        auto* button = buttonNamed(window(), label);
        ASSERT_TRUE(button) << label;
        program.click(*button);
    }
    template <typename T>
    static T answer(const Result<T>& result) {
        RunningProgram::until("there is an answer", [&] { return result->has_value(); });
        return **result;
    }
    bool isGone() { return program.windowsOnScreen().size() == 1; }
    std::vector<std::string> buttons() {
        std::vector<std::string> labels;
        for (auto* button : visibleIn<Gtk::Button>(window()))
            labels.push_back(button->get_label());
        return labels;
    }

    RunningProgram program;
    std::vector<std::string> opened; ///< addresses of links
    std::unique_ptr<gtk::GtkUserDriver> driver;
    updater::UpdateOffer offer{"Kelo", "1.0", "1.1", {}};
};

TEST_F(UpdateWindows, OfferNamesBothVersionsAndHasThreeAnswers) {
    run([&] {
        start(driver->showOffer(offer, CheckKind::userInitiated));
        EXPECT_EQ(buttons(), (std::vector<std::string>{"Skip This Version", "Remind Me Later",
                                                       "Install Update"}));
        EXPECT_TRUE(says("A new version of Kelo is available"));
        EXPECT_TRUE(says("Version 1.1 is available. You have version 1.0."));
        EXPECT_EQ(window().get_default_widget(), buttonNamed(window(), "Install Update"));
    });
}

TEST_F(UpdateWindows, EachAnswerOfTheOfferIsTheOneOfItsButton) {
    run([&] {
        for (const auto& [label, expected] :
             {std::pair{"Skip This Version", UpdateChoice::skipThisVersion},
              std::pair{"Remind Me Later", UpdateChoice::remindLater},
              std::pair{"Install Update", UpdateChoice::install}}) {
            const auto result = start(driver->showOffer(offer, CheckKind::userInitiated));
            click(label);
            EXPECT_EQ(answer(result), expected);
            EXPECT_EQ(isGone(), expected != UpdateChoice::install);
        }
    });
}

TEST_F(UpdateWindows, StaysWithTheKeyboardFromTheAnswerToWhatFollowsIt) {
    run([&] {
        const auto result = start(driver->showOffer(offer, CheckKind::userInitiated));
        click("Install Update");
        EXPECT_EQ(answer(result), UpdateChoice::install);
        EXPECT_FALSE(buttonNamed(window(), "Install Update")->is_sensitive());
        window().close();
        program.screen.press(GDK_KEY_Escape);
        driver->showDownload({1000, 4000}, [] {});
        EXPECT_FALSE(isGone());
        EXPECT_TRUE(window().is_active());
        EXPECT_TRUE(buttonNamed(window(), "Cancel")->is_sensitive());
        driver->dismiss();
        EXPECT_TRUE(isGone());
    });
}

TEST_F(UpdateWindows, ReturnInstalls) {
    run([&] {
        const auto result = start(driver->showOffer(offer, CheckKind::userInitiated));
        window();
        program.screen.press(GDK_KEY_Return);
        EXPECT_EQ(answer(result), UpdateChoice::install);
    });
}

TEST_F(UpdateWindows, EscapeAndTheWindowsCloseButtonGiveTheMildestAnswer) {
    run([&] {
        auto result = start(driver->showOffer(offer, CheckKind::userInitiated));
        window();
        program.screen.press(GDK_KEY_Escape);
        EXPECT_EQ(answer(result), UpdateChoice::remindLater);
        result = start(driver->showOffer(offer, CheckKind::userInitiated));
        window().close();
        EXPECT_EQ(answer(result), UpdateChoice::remindLater);
        const auto ready = start(driver->showReadyToRelaunch(offer));
        program.window(title).close();
        EXPECT_EQ(answer(ready), RelaunchChoice::later);
        const auto automatic = start(driver->askForAutomaticChecks("Kelo"));
        program.window(title).close();
        EXPECT_FALSE(answer(automatic));
    });
}

TEST_F(UpdateWindows, ImportantUpdateCanOnlyBeInstalledOrClosed) {
    offer.critical = true;
    run([&] {
        start(driver->showOffer(offer, CheckKind::userInitiated));
        EXPECT_EQ(buttons(), std::vector<std::string>{"Install Update"});
        EXPECT_TRUE(says("Version 1.1 is available. You have version 1.0. It is important to "
                         "install it."));
    });
}

TEST_F(UpdateWindows, WhatCannotBeInstalledHereIsOfferedToReadAbout) {
    offer.informationalOnly = true;
    run([&] {
        start(driver->showOffer(offer, CheckKind::userInitiated));
        EXPECT_EQ(buttons().back(), "Learn More…");
    });
}

TEST_F(UpdateWindows, NotesAreTextToReadAndNothingMore) {
    offer.releaseNotes = {{updater::ParagraphKind::heading, {{"News"}}},
                          {updater::ParagraphKind::listItem, {{"<b>Bold</b> "}, {"claims", true}}}};
    run([&] {
        start(driver->showOffer(offer, CheckKind::userInitiated));
        auto& notes = shownNotes();
        EXPECT_EQ(notes.get_text(), "News\n\n•\u2002<b>Bold</b> claims");
        EXPECT_TRUE(notes.get_selectable());
    });
}

TEST_F(UpdateWindows, WordLongerThanALineGetsNoHyphenOfOurs) {
    const std::string word(120, 'W');
    offer.releaseNotes = {{updater::ParagraphKind::body, {{word}}}};
    run([&] {
        start(driver->showOffer(offer, CheckKind::userInitiated));
        EXPECT_TRUE(isBrokenWithoutHyphen(shownNotes()));
        start(thenTrue(driver->showFailure(word)));
        RunningProgram::until("the failure is shown", [&] { return says(word); });
        EXPECT_TRUE(isBrokenWithoutHyphen(*labelSaying(window(), word)));
    });
}

TEST_F(UpdateWindows, LinkInTheNotesShowsItsAddressAndOpensIt) {
    offer.releaseNotes = {
        {updater::ParagraphKind::body,
         {{"See "}, {.text = "the <page>", .link = "https://example.org/?a=1&b=\"2\""}, {"."}}}};
    run([&] {
        start(driver->showOffer(offer, CheckKind::userInitiated));
        auto& notes = shownNotes();
        EXPECT_EQ(notes.get_text(), "See the <page>.");
        program.untilActive(window());
        // Past the buttons and the text to the link in it.
        for (int presses = 0; presses < 8 && notes.get_current_uri().empty(); ++presses) {
            program.screen.press(GDK_KEY_Tab);
            program.settle();
        }
        EXPECT_EQ(notes.get_current_uri(), "https://example.org/?a=1&b=\"2\"");
        program.screen.press(GDK_KEY_Return);
        program.settle();
        EXPECT_EQ(opened, std::vector<std::string>{"https://example.org/?a=1&b=\"2\""});
    });
}

TEST_F(UpdateWindows, CodeInTheNotesKeepsItsLines) {
    offer.releaseNotes = {
        {updater::ParagraphKind::code, {{.text = "a {\n    b & c;\n}", .code = true}}}};
    run([&] {
        start(driver->showOffer(offer, CheckKind::userInitiated));
        EXPECT_EQ(shownNotes().get_text(), "a {\n    b & c;\n}");
    });
}

TEST_F(UpdateWindows, ScheduledOfferDoesNotTakeTheKeyboard) {
    run([&] {
        auto& main = program.window("Kelo");
        start(driver->showOffer(offer, CheckKind::scheduled));
        auto& shown = program.window(title);
        program.untilDrawn(shown);
        program.settle();
        EXPECT_FALSE(shown.is_active());
        EXPECT_TRUE(main.is_active());
        EXPECT_TRUE(driver->bringToFront());
        program.untilActive(shown);
        // The progress disappears again with the next content.
        driver->dismiss();
        start(driver->showOffer(offer, CheckKind::userInitiated));
        window();
        driver->dismiss();
        start(driver->showOffer(offer, CheckKind::scheduled));
        program.untilDrawn(program.window(title));
        program.settle();
        EXPECT_TRUE(main.is_active());
    });
}

TEST_F(UpdateWindows, CheckingAndDownloadingCanBeCancelled) {
    run([&] {
        int cancelled = 0;
        const auto cancel = [&] { ++cancelled; };
        driver->showChecking(cancel);
        EXPECT_TRUE(says("Checking for updates…"));
        click("Cancel");
        RunningProgram::until("it was cancelled", [&] { return cancelled == 1; });
        driver->showDownload({1000, 4000}, cancel);
        window();
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("it was cancelled", [&] { return cancelled == 2; });
    });
}

TEST_F(UpdateWindows, DownloadShowsHowFarItIs) {
    run([&] {
        driver->showDownload({1000, 4000}, [] {});
        driver->bringToFront();
        EXPECT_TRUE(says("1.0\u00a0kB of 4.0\u00a0kB"));
        auto* bar = visibleIn<Gtk::ProgressBar>(window()).at(0);
        EXPECT_DOUBLE_EQ(bar->get_fraction(), 0.25);
        driver->showDownload({3000, 4000}, [] {});
        EXPECT_EQ(visibleIn<Gtk::ProgressBar>(window()).at(0), bar) << "the bar only moves";
        EXPECT_DOUBLE_EQ(bar->get_fraction(), 0.75);
        driver->showDownload({5000, std::nullopt}, [] {});
        EXPECT_TRUE(visibleIn<Gtk::ProgressBar>(window()).empty());
        EXPECT_EQ(visibleIn<Gtk::Spinner>(window()).size(), 1U);
    });
}

TEST_F(UpdateWindows, MessagesAndFailuresWaitToBeAcknowledged) {
    run([&] {
        auto result = start(thenTrue(driver->showMessage("You are up to date", "Good.")));
        EXPECT_TRUE(says("You are up to date"));
        click("OK");
        EXPECT_TRUE(answer(result));
        result = start(thenTrue(driver->showFailure("Nobody answered. Try again later.")));
        EXPECT_TRUE(says("Nobody answered. Try again later."));
        window();
        program.screen.press(GDK_KEY_Return);
        EXPECT_TRUE(answer(result));
        EXPECT_TRUE(isGone());
    });
}

TEST_F(UpdateWindows, NewContentAnswersAnOpenQuestionMildly) {
    run([&] {
        const auto result = start(driver->showOffer(offer, CheckKind::userInitiated));
        window();
        driver->showPreparing();
        program.untilDrawn(program.window(title));
        EXPECT_EQ(answer(result), UpdateChoice::remindLater);
        EXPECT_TRUE(says("Preparing the update…"));
    });
}

TEST_F(UpdateWindows, DismissTakesTheWindowAwayAndAnswersMildly) {
    run([&] {
        EXPECT_FALSE(driver->bringToFront());
        const auto result = start(driver->showReadyToRelaunch(offer));
        program.untilDrawn(program.window(title));
        driver->dismiss();
        EXPECT_EQ(answer(result), RelaunchChoice::later);
        EXPECT_TRUE(isGone());
        EXPECT_FALSE(driver->bringToFront());
    });
}

} // namespace
} // namespace kelo::tests
