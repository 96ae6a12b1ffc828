#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/GtkPageDialogs.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "testing/screen/OtherProgram.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/entry.h>
#include <gtkmm/scrolledwindow.h>

#include <algorithm>

namespace kelo::tests {
namespace {

using window::PageQuestionKind;

window::PageQuestion question(PageQuestionKind kind, std::string message) {
    window::PageQuestion question;
    question.kind = kind;
    question.host = "assistant.example.com";
    question.message = std::move(message);
    return question;
}

class PageDialog : public testing::Test {
protected:
    void show(const window::PageQuestion& asked) {
        auto& parent = program.window("Kelo");
        if (!gtk::ModalWindow::topmost())
            program.untilActive(parent);
        answer.reset();
        open = dialogs.show(asked, parent.gobj(), [this](const window::PageAnswer& given) {
            answer = given;
            ++answers;
            MainLoop::main().post([closed = std::shared_ptr(std::move(open))] { (void)closed; });
        });
    }
    Gtk::Window& dialog(const std::string& title = "assistant.example.com says") {
        auto& window = program.window(title);
        program.untilActive(window);
        return window;
    }
    void untilAnswered() {
        RunningProgram::until("an answer", [this] { return answer.has_value(); });
        RunningProgram::settle();
    }

    RunningProgram program;
    gtk::GtkPageDialogs dialogs{hurryingClock()};
    std::unique_ptr<window::PageDialog> open;
    std::optional<window::PageAnswer> answer;
    int answers = 0;
};

TEST_F(PageDialog, SaysWhoSpeaksAndWhatAndIsConfirmedByEnter) {
    program.run([&] {
        show(question(PageQuestionKind::alert, "Saved.\nAll of it."));
        auto& window = dialog();
        EXPECT_TRUE(labelSaying(window, "assistant.example.com says"));
        auto* text = labelSaying(window, "Saved.\nAll of it.");
        ASSERT_TRUE(text);
        EXPECT_TRUE(text->get_selectable());
        EXPECT_TRUE(isDescribed(window, "Saved.\nAll of it."));
        EXPECT_EQ(visibleIn<Gtk::Button>(window).size(), 1U);
        EXPECT_EQ(window.get_focus(), buttonNamed(window, "OK"));
        EXPECT_TRUE(program.window("Kelo").has_css_class("kelo-dimmed"));
        program.screen.press(GDK_KEY_Return);
        untilAnswered();
        EXPECT_TRUE(answer->isConfirmed);
        EXPECT_FALSE(answer->silencesPage);
        EXPECT_FALSE(program.window("Kelo").has_css_class("kelo-dimmed"));
    });
}

/// A dialog that says nothing.
class EmptyDialog final : public gtk::ModalWindow {
public:
    explicit EmptyDialog(Gtk::Window& parent) : ModalWindow(&parent) { present(); }

private:
    void dismissed() override {}
};

TEST_F(PageDialog, ThatFollowsAnotherLiesOverADimmedPageAsWell) {
    program.run([&] {
        auto& parent = program.window("Kelo");
        auto first = std::make_unique<EmptyDialog>(parent);
        first->set_visible(false);
        auto second = std::make_unique<EmptyDialog>(parent);
        program.untilActive(*second);
        first.reset();
        EXPECT_TRUE(parent.has_css_class("kelo-dimmed"));
        second.reset();
        EXPECT_FALSE(parent.has_css_class("kelo-dimmed"));
    });
}

TEST_F(PageDialog, OfAPageWithoutAHostNamesNone) {
    program.run([&] {
        auto asked = question(PageQuestionKind::alert, "Saved.");
        asked.host.clear();
        show(asked);
        dialog("This page says");
    });
}

TEST_F(PageDialog, ConfirmIsCancelledByEscapeAndByItsButton) {
    program.run([&] {
        show(question(PageQuestionKind::confirm, "Delete it?"));
        auto* first = &dialog();
        EXPECT_LT(program.boxOf(*buttonNamed(*first, "Cancel")).x,
                  program.boxOf(*buttonNamed(*first, "OK")).x);
        EXPECT_EQ(first->get_default_widget(), buttonNamed(*first, "OK"));
        program.screen.press(GDK_KEY_Escape);
        untilAnswered();
        EXPECT_FALSE(answer->isConfirmed);
        show(question(PageQuestionKind::confirm, "Delete it?"));
        program.click(*buttonNamed(dialog(), "Cancel"));
        untilAnswered();
        EXPECT_FALSE(answer->isConfirmed);
        show(question(PageQuestionKind::confirm, "Delete it?"));
        program.click(*buttonNamed(dialog(), "OK"));
        untilAnswered();
        EXPECT_TRUE(answer->isConfirmed);
    });
}

TEST_F(PageDialog, PromptIsFilledInAndTypedOver) {
    program.run([&] {
        auto asked = question(PageQuestionKind::prompt, "Your name?");
        asked.defaultText = "Ann";
        show(asked);
        auto& window = dialog();
        const auto entries = visibleIn<Gtk::Entry>(window);
        ASSERT_EQ(entries.size(), 1U);
        EXPECT_EQ(entries.front()->get_text(), "Ann");
        EXPECT_TRUE(isNamed(*entries.front(), "Your name?"));
        program.screen.type("eve");
        program.screen.press(GDK_KEY_Return);
        untilAnswered();
        EXPECT_TRUE(answer->isConfirmed);
        EXPECT_EQ(answer->text, "eve");
    });
}

TEST_F(PageDialog, BeforeLeavingSpeaksForItselfAndEscapeStays) {
    program.run([&] {
        for (const bool leaves : {false, true}) {
            show(question(PageQuestionKind::beforeUnload, "You will lose a fortune!"));
            auto& window = dialog("Leave this page?");
            EXPECT_FALSE(labelSaying(window, "You will lose a fortune!"));
            EXPECT_TRUE(labelSaying(
                window, "What you have entered on assistant.example.com may not be saved."));
            EXPECT_TRUE(buttonNamed(window, "Stay"));
            EXPECT_EQ(window.get_default_widget(), buttonNamed(window, "Leave"));
            program.screen.press(leaves ? GDK_KEY_Return : GDK_KEY_Escape);
            untilAnswered();
            EXPECT_EQ(answer->isConfirmed, leaves);
        }
    });
}

TEST_F(PageDialog, OffersToRefuseMoreOnlyIfItIsTold) {
    program.run([&] {
        auto asked = question(PageQuestionKind::alert, "Again.");
        show(asked);
        EXPECT_TRUE(visibleIn<Gtk::CheckButton>(dialog()).empty());
        program.screen.press(GDK_KEY_Return);
        untilAnswered();
        asked.mayBeSilenced = true;
        show(asked);
        const auto boxes = visibleIn<Gtk::CheckButton>(dialog());
        ASSERT_EQ(boxes.size(), 1U);
        EXPECT_EQ(boxes.front()->get_label(), "Do not let this page ask again");
        program.click(*boxes.front());
        RunningProgram::until("the mark", [&] { return boxes.front()->get_active(); });
        program.screen.press(GDK_KEY_Escape);
        untilAnswered();
        EXPECT_TRUE(answer->silencesPage) << "also without a button";
    });
}

TEST_F(PageDialog, GoesFromTheButtonsToTheTextByTab) {
    program.run([&] {
        auto asked = question(PageQuestionKind::confirm, "Delete it?");
        asked.mayBeSilenced = true;
        show(asked);
        auto& window = dialog();
        std::vector<Gtk::Widget*> order;
        for (int step = 0; step < 4; ++step) {
            order.push_back(window.get_focus());
            program.screen.press(GDK_KEY_Tab);
            RunningProgram::until("the next", [&] { return window.get_focus() != order.back(); });
        }
        EXPECT_EQ(order.at(0), buttonNamed(window, "OK"));
        EXPECT_EQ(order.at(1), labelSaying(window, "Delete it?"));
        EXPECT_EQ(order.at(2), visibleIn<Gtk::CheckButton>(window).at(0));
        EXPECT_EQ(order.at(3), buttonNamed(window, "Cancel"));
    });
}

TEST_F(PageDialog, FitsTheScreenWhateverThePageSays) {
    program.run([&] {
        std::string endless;
        for (int line = 0; line < 500; ++line)
            endless += "line\r\n";
        for (const std::string& message : {endless, std::string(100000, 'x')}) {
            auto asked = question(PageQuestionKind::prompt, message);
            asked.mayBeSilenced = true;
            show(asked);
            auto& window = dialog();
            program.untilDrawn(window);
            const auto box = program.boxOf(*window.get_child());
            EXPECT_LE(box.height, 480 * window.get_scale_factor());
            EXPECT_LE(box.width, 640 * window.get_scale_factor());
            program.screen.press(GDK_KEY_Escape);
            untilAnswered();
        }
    });
}

// Otherwise a page could put its prompt under the hands of somebody who types a password.
TEST_F(PageDialog, WaitsUntilOtherDialogsHaveGone) {
    class Other final : public gtk::ModalWindow {
    public:
        explicit Other(Gtk::Window* parent) : ModalWindow(parent) { set_title("other"); }

    private:
        void dismissed() override { set_visible(false); }
    };
    program.run([&] {
        Other other(&program.window("Kelo"));
        other.present();
        program.untilActive(other);
        show(question(PageQuestionKind::prompt, "Password?"));
        RunningProgram::settle();
        EXPECT_EQ(gtk::ModalWindow::topmost(), &other);
        program.screen.press(GDK_KEY_Escape);
        dialog();
        open.reset();
        other.present();
        program.untilActive(other);
        auto urgent = question(PageQuestionKind::beforeUnload, "");
        urgent.isUrgent = true;
        show(urgent);
        dialog("Leave this page?");
        open.reset();
    });
}

TEST_F(PageDialog, IsNotShownAnyMoreOnceItsPageHasGoneWhileItWaited) {
    program.run([&] {
        show(question(PageQuestionKind::alert, "First."));
        auto& first = dialog();
        auto shown = std::move(open);
        show(question(PageQuestionKind::alert, "Second."));
        open.reset();
        first.close();
        RunningProgram::settle();
        EXPECT_EQ(gtk::ModalWindow::topmost(), nullptr);
        EXPECT_EQ(answers, 1);
    });
}

TEST_F(PageDialog, ComesOnceTheOneBeforeItIsTakenAway) {
    program.run([&] {
        show(question(PageQuestionKind::alert, "First."));
        dialog();
        auto shown = std::move(open);
        auto second = question(PageQuestionKind::alert, "Second.");
        second.host = "second.example.com";
        show(second);
        shown.reset(); // its page has gone
        dialog("second.example.com says");
        open.reset();
    });
}

TEST_F(PageDialog, LeavesTheKeyboardToAnotherProgram) {
    program.run([&] {
        screen::OtherProgram other;
        RunningProgram::until("the other program has the keyboard",
                              [&] { return !program.window("Kelo").is_active(); });
        gtk::GtkPageDialogs slow([] { return std::chrono::steady_clock::time_point(); });
        const auto kept = slow.show(question(PageQuestionKind::alert, "Look here."),
                                    program.window("Kelo").gobj(), [](const auto&) {});
        auto& window = program.window("assistant.example.com says");
        program.untilDrawn(window);
        RunningProgram::settle();
        EXPECT_FALSE(window.is_active());
    });
}

} // namespace
} // namespace kelo::tests
