// Alerts with a text of any length.
#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/GtkAlertPresenter.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/adjustment.h>
#include <gtkmm/label.h>
#include <gtkmm/passwordentry.h>
#include <gtkmm/scrollbar.h>
#include <gtkmm/scrolledwindow.h>

#include <algorithm>
#include <utility>

namespace kelo::tests {
namespace {

Task<void> present(platform::AlertPresenter& presenter, platform::Alert alert) {
    co_await presenter.runModal(std::move(alert));
}

class AlertText : public testing::Test {
protected:
    static platform::Alert notice() {
        platform::Alert alert;
        alert.messageText = "Passkey";
        return alert;
    }
    Gtk::Window& show(platform::Alert alert) {
        const std::string title = alert.messageText;
        spawn(present(presenter, std::move(alert)));
        auto& window = program.window(title);
        program.untilActive(window);
        program.untilDrawn(window);
        return window;
    }
    /// Where the alert's text can be scrolled.
    static Gtk::ScrolledWindow& scrollIn(Gtk::Window& window) {
        return *visibleIn<Gtk::ScrolledWindow>(window).at(0);
    }

    /// In pixels: shorter lines would be hard to read.
    static constexpr int narrowest = 200;

    RunningProgram program;
    gtk::GtkAlertPresenter presenter{program.host, hurryingClock()};
};

TEST_F(AlertText, LongOneIsScrolledWithTheKeyboard) {
    program.run([&] {
        auto alert = notice();
        while (alert.informativeText.size() < 6000)
            alert.informativeText += "Registration failed for a long reason. ";
        alert.accessoryView = platform::SecureTextField{240, 24, "Code"};
        auto& window = show(alert);
        EXPECT_LT(program.boxOf(window).height, 600);
        EXPECT_EQ(visibleIn<Gtk::PasswordEntry>(window).size(), 1U);
        EXPECT_TRUE(buttonNamed(window, "OK"));
        auto& scroll = scrollIn(window);
        EXPECT_FALSE(visibleIn<Gtk::Scrollbar>(scroll).empty());
        EXPECT_GT(program.boxOf(scroll).width, narrowest);
        const auto place = scroll.get_vadjustment();
        ASSERT_EQ(place->get_value(), 0);
        ASSERT_TRUE(scroll.grab_focus() && scroll.has_focus());
        program.screen.press(GDK_KEY_Page_Down);
        RunningProgram::until("the text is scrolled", [&] { return place->get_value() > 0; });
    });
}

TEST_F(AlertText, OneOfAFewLinesIsShownWholeAndTheKeyboardSkipsIt) {
    program.run([&] {
        auto alert = notice();
        for (int sentences = 1; sentences <= 5; ++sentences) {
            alert.informativeText += "Could not connect to assistant.example.com. Try again. ";
            auto& window = show(alert);
            auto& scroll = scrollIn(window);
            const auto place = scroll.get_vadjustment();
            EXPECT_LE(place->get_upper(), place->get_page_size()) << sentences;
            EXPECT_FALSE(scroll.get_focusable());
            EXPECT_TRUE(visibleIn<Gtk::Scrollbar>(scroll).empty());
            EXPECT_GT(program.boxOf(*withClass(window, "kelo-body")).width, narrowest);
            dropSpawnedTasks();
            RunningProgram::settle();
        }
    });
}

TEST_F(AlertText, EndlessOneIsCut) {
    program.run([&] {
        auto alert = notice();
        alert.informativeText = std::string(5'000'000, 'a');
        const auto texts = textsIn(show(alert));
        EXPECT_EQ(std::ranges::count(texts, std::string(1999, 'a') + "…"), 1);
    });
}

TEST_F(AlertText, NoWordStandsAloneOnTheLastLine) {
    program.run([&] {
        for (const std::string text :
             {"Your passkey was created and can be used from now on to sign in.",
              "The service at assistant.example.com did not take the passkey, because it could not "
              "be verified."}) {
            auto alert = notice();
            alert.informativeText = text;
            auto& window = show(alert);
            for (auto* label : visibleIn<Gtk::Label>(window)) {
                if (label->get_text().raw() != text)
                    continue;
                std::vector<int> widths;
                for (const auto& line : label->get_layout()->get_const_lines()) {
                    Pango::Rectangle ink;
                    Pango::Rectangle logical;
                    line->get_pixel_extents(ink, logical);
                    widths.push_back(logical.get_width());
                }
                ASSERT_GE(widths.size(), 2U) << text;
                EXPECT_LE(widths.size(), 3U) << text;
                EXPECT_LT(label->get_height(), 80) << "as tall as its lines";
                EXPECT_GT(widths.back() * 2, std::ranges::max(widths)) << text;
            }
            program.screen.press(GDK_KEY_Return);
            RunningProgram::until("the alert is gone",
                                  [&] { return program.windowsOnScreen().size() == 1; });
        }
    });
}

TEST_F(AlertText, WordLongerThanALineIsBrokenAndNothingSticksOut) {
    program.run([&] {
        auto alert = notice();
        alert.informativeText = "No answer from " + std::string(120, 'x') + ".example.com.";
        auto& window = show(alert);
        EXPECT_LT(program.boxOf(window).width, 600);
    });
}

TEST_F(AlertText, WordThatIsBrokenGetsNoHyphenOfOurs) {
    program.run([&] {
        auto alert = notice();
        alert.informativeText = std::string(120, 'W');
        auto* label = labelSaying(show(alert), alert.informativeText);
        ASSERT_NE(label, nullptr);
        EXPECT_TRUE(isBrokenWithoutHyphen(*label));
    });
}

} // namespace
} // namespace kelo::tests
