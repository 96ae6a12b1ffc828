#include "component/gtk/AccessibilityListener.h"
#include "component/gtk/RunningProgram.h"
#include "linux/gtk/dialogs/GtkAlertPresenter.h"
#include "linux/gtk/dialogs/GtkPasskeySheet.h"
#include "linux/gtk/kit/ModalWindow.h"

#include <gdk/gdkkeysyms.h>
#include <gdkmm/clipboard.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace kelo::tests {
namespace {

constexpr const char* textInterface = "org.a11y.atspi.Text";
constexpr const char* editableInterface = "org.a11y.atspi.EditableText";
constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";

/// What the user gave; empty until then.
using Given = std::shared_ptr<std::string>;

Task<void> prompt(gtk::GtkAlertPresenter& presenter, Given given) {
    platform::Alert alert;
    alert.messageText = "Sure?";
    alert.buttons = {"Yes", "No"};
    alert.accessoryView = platform::SecureTextField{240, 24, "Account password"};
    alert.accessoryIsInitialFirstResponder = true;
    const auto outcome = co_await presenter.runModal(std::move(alert));
    *given = outcome.fieldText.view();
}

Task<void> ask(authenticator::PasskeySheet& sheet, bool echo, Given given) {
    authenticator::VerificationPrompt question{"Login password", echo};
    const auto answer = co_await sheet.ask(std::move(question));
    if (answer)
        *given = answer->view();
}

/// Takes out what a masked entry shows.
std::string withoutMasks(std::string text) {
    const std::string mask = "●";
    for (auto at = text.find(mask); at != std::string::npos; at = text.find(mask))
        text.erase(at, mask.size());
    return text;
}

enum class Place { prompt, sheet };

class SecretEntry : public testing::TestWithParam<Place> {
protected:
    /// Opens the place, runs the body when its entry has the keyboard, and closes it.
    void run(const std::function<void()>& body, bool echo = false) {
        program.run([&] {
            bus.emplace();
            if (GetParam() == Place::prompt) {
                spawn(prompt(presenter, given));
            } else {
                sheet = factory.makeSheet(program.host.keyWindow());
                spawn(ask(*sheet, echo, given));
            }
            RunningProgram::until("a dialog is there",
                                  [] { return gtk::ModalWindow::topmost() != nullptr; });
            window = gtk::ModalWindow::topmost();
            program.untilActive(*window);
            body();
            sheet.reset();
            dropSpawnedTasks();
            bus.reset();
        });
    }
    void type(const std::string& text) {
        program.screen.type(text);
        length += static_cast<int>(text.size());
        untilCaretIsSaidToBeAt(length);
    }
    void erase() {
        program.screen.press(GDK_KEY_BackSpace);
        untilCaretIsSaidToBeAt(--length);
    }
    void paste(const std::string& text) {
        window->get_clipboard()->set_text(text);
        program.screen.press(GDK_KEY_v, {GDK_KEY_Control_L});
        length += static_cast<int>(text.size());
        untilCaretIsSaidToBeAt(length);
    }
    /// What the bus says of one object, it says in the order of the events.
    void untilCaretIsSaidToBeAt(int place) {
        const std::string beginning = "('', " + std::to_string(place) + ",";
        RunningProgram::until("the caret is said to be at " + std::to_string(place), [&] {
            const auto& said = bus->events;
            const auto found = std::ranges::find_if(said, [&](const auto& event) {
                return event.name == "TextCaretMoved" && event.text.starts_with(beginning);
            });
            if (found != said.end())
                entry = *found;
            return found != said.end();
        });
    }
    /// The texts that are said to have been inserted or deleted.
    std::string changes() const {
        std::string all;
        for (const auto& event : bus->events)
            if (event.name == "TextChanged")
                all += event.text + "\n";
        return all;
    }
    bool anythingHeardHas(const std::string& text) const {
        return std::ranges::any_of(bus->events, [&](const auto& event) {
            return event.text.find(text) != std::string::npos;
        });
    }
    std::string askText(const char* method, GVariant* arguments) {
        return bus->ask(entry, textInterface, method, arguments);
    }
    static std::string textOn(const Glib::RefPtr<Gdk::Clipboard>& clipboard) {
        std::optional<std::string> text;
        clipboard->read_text_async([&](Glib::RefPtr<Gio::AsyncResult>& result) {
            try {
                text = clipboard->read_text_finish(result).raw();
            } catch (const Glib::Error&) {
                text = "";
            }
        });
        RunningProgram::until("the clipboard is read", [&] { return text.has_value(); });
        return *text;
    }

    RunningProgram program;
    gtk::GtkAlertPresenter presenter{program.host, hurryingClock()};
    gtk::GtkPasskeySheetFactory factory{hurryingClock()};
    std::unique_ptr<authenticator::PasskeySheet> sheet;
    std::optional<AccessibilityListener> bus;
    Gtk::Window* window = nullptr;
    AccessibilityListener::Event entry; ///< any that came from the entry; set by type()
    int length = 0;
    Given given = std::make_shared<std::string>();
};

TEST_P(SecretEntry, IsNotHeardOnTheAccessibilityBus) {
    run([&] {
        type("Xyz7");
        erase();
        paste("Pasted9");
        type("q");
        program.screen.press(GDK_KEY_Return);
        RunningProgram::until("it is taken", [&] { return !given->empty(); });
        EXPECT_EQ(*given, "XyzPasted9q");
        // An answer comes after all that was said before.
        bus->ask(entry, accessibleInterface, "GetRole");
        EXPECT_EQ(changes(), "");
        EXPECT_FALSE(anythingHeardHas("Pasted9"));
        EXPECT_FALSE(anythingHeardHas("Xyz"));
    });
}

TEST_P(SecretEntry, IsNotHeardWhenItIsCancelled) {
    run([&] {
        type("Xyz7");
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("it is gone", [&] { return !window->get_mapped(); });
        bus->ask(entry, accessibleInterface, "GetRole");
        EXPECT_EQ(changes(), "");
    });
}

TEST_P(SecretEntry, ScreenReaderHearsAPasswordFieldAndHowMuchIsTyped) {
    run([&] {
        type("Xyz7"); // waits until the caret is said to have moved
        EXPECT_EQ(bus->ask(entry, accessibleInterface, "GetRole"), "(40,)");
        EXPECT_EQ(bus->ask(entry, "org.freedesktop.DBus.Properties", "Get",
                           g_variant_new("(ss)", textInterface, "CharacterCount")),
                  "(<4>,)");
    });
}

TEST_P(SecretEntry, CannotBeAskedForOnTheAccessibilityBus) {
    run([&] {
        type("Xyz7");
        EXPECT_EQ(askText("GetText", g_variant_new("(ii)", 0, 4)), "('●●●●',)");
        EXPECT_EQ(withoutMasks(askText("GetText", g_variant_new("(ii)", 0, -1))), "('',)");
        for (int offset = 0; offset < 4; ++offset)
            EXPECT_EQ(askText("GetCharacterAtOffset", g_variant_new("(i)", offset)), "(9679,)");
        for (const char* method :
             {"GetTextAtOffset", "GetTextBeforeOffset", "GetTextAfterOffset", "GetStringAtOffset"})
            for (unsigned kind = 0; kind < 5; ++kind) {
                const auto reply = askText(method, g_variant_new("(iu)", 1, kind));
                EXPECT_TRUE(withoutMasks(reply).starts_with("('', ")) << method << kind << reply;
            }
    });
}

TEST_P(SecretEntry, CannotBeCopied) {
    run([&] {
        type("Xyz7");
        const auto clipboard = window->get_clipboard();
        clipboard->set_text("before");
        bus->ask(entry, editableInterface, "CopyText", g_variant_new("(ii)", 0, 4));
        EXPECT_THAT(withoutMasks(textOn(clipboard)), testing::AnyOf("", "before"));
        program.screen.press(GDK_KEY_a, {GDK_KEY_Control_L});
        program.screen.press(GDK_KEY_c, {GDK_KEY_Control_L});
        program.screen.press(GDK_KEY_x, {GDK_KEY_Control_L});
        program.screen.press(GDK_KEY_End);
        RunningProgram::settle();
        EXPECT_THAT(withoutMasks(textOn(clipboard)), testing::AnyOf("", "before"));
        EXPECT_EQ(withoutMasks(textOn(window->get_primary_clipboard())), "");
        bus->ask(entry, editableInterface, "CutText", g_variant_new("(ii)", 0, 4));
        EXPECT_THAT(withoutMasks(textOn(clipboard)), testing::AnyOf("", "before"));
    });
}

INSTANTIATE_TEST_SUITE_P(Everywhere, SecretEntry, testing::Values(Place::prompt, Place::sheet),
                         [](const testing::TestParamInfo<Place>& place) {
                             return place.param == Place::prompt ? "Prompt" : "Sheet";
                         });

class VisibleAnswer : public SecretEntry {};

// It also shows that the tests above hear what is said.
TEST_P(VisibleAnswer, IsReadToTheUser) {
    run(
        [&] {
            type("Xyz7");
            EXPECT_NE(changes().find("('insert', 0, 1, <'X'>"), std::string::npos) << changes();
            EXPECT_EQ(askText("GetCharacterAtOffset", g_variant_new("(i)", 0)), "(88,)");
        },
        /*echo=*/true);
}

INSTANTIATE_TEST_SUITE_P(Of, VisibleAnswer, testing::Values(Place::sheet),
                         [](const auto&) { return "Sheet"; });

} // namespace
} // namespace kelo::tests
