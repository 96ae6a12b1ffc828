#include "component/gtk/RunningProgram.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/gtk/dialogs/GtkPasskeySheet.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/label.h>

namespace kelo::tests {
namespace {

/// The passkey sheet as it asks for consent.
class SheetLook : public testing::Test {
protected:
    void run(const std::function<void()>& body) {
        program.run([&] {
            body();
            sheet.reset();
        });
    }
    void startConsent(std::vector<std::string> accounts = {"ada@example.com"}) {
        sheet = factory.makeSheet(program.host.keyWindow());
        authenticator::ConsentRequest request;
        request.relyingPartyIdentifier = "assistant.example.com";
        request.accountNames = std::move(accounts);
        spawn(confirm(*sheet, std::move(request)));
        program.untilDrawn(window());
    }
    static Task<void> confirm(authenticator::PasskeySheet& sheet,
                              authenticator::ConsentRequest request) {
        co_await sheet.confirm(std::move(request));
    }
    Gtk::Window& window() { return program.window("Sign in with a passkey?"); }
    /// Nothing while it is open; then whether the user has agreed.
    using Agreed = std::shared_ptr<std::optional<bool>>;
    Agreed startDeletion(std::string warning = "The passkey of Ada <ada> will be gone.") {
        sheet = factory.makeSheet(program.host.keyWindow());
        authenticator::ConsentRequest request;
        request.ceremony = authenticator::Ceremony::deletion;
        request.warning = std::move(warning);
        auto agreed = std::make_shared<std::optional<bool>>();
        spawn(agree(*sheet, std::move(request), agreed));
        program.untilActive(question());
        return agreed;
    }
    static Task<void> agree(authenticator::PasskeySheet& sheet,
                            authenticator::ConsentRequest request, Agreed agreed) {
        const auto chosen = co_await sheet.confirm(std::move(request));
        *agreed = chosen.has_value();
    }
    Gtk::Window& question() { return program.window("Delete this passkey?"); }

    RunningProgram program;
    gtk::GtkPasskeySheetFactory factory{hurryingClock()};
    std::unique_ptr<authenticator::PasskeySheet> sheet;
};

TEST_F(SheetLook, OnlyAccountIsNotInAFrameLikeAnEntry) {
    run([&] {
        startConsent();
        EXPECT_FALSE(withClass(window(), "kelo-group"));
        // Nor is there room for one: the buttons follow.
        const auto name = program.boxOf(*withClass(window(), "kelo-only-account"));
        EXPECT_LT(name.height, 30);
    });
}

TEST_F(SheetLook, DeletionSaysWhatItTakesAwayAndHasAButtonOfItsOwn) {
    run([&] {
        const auto agreed = startDeletion();
        EXPECT_TRUE(labelSaying(question(), "The passkey of Ada <ada> will be gone."));
        EXPECT_FALSE(labelSaying(question(), "Account"));
        EXPECT_FALSE(buttonNamed(question(), "Continue"));
        auto* button = buttonNamed(question(), "Delete");
        ASSERT_NE(button, nullptr);
        EXPECT_TRUE(button->has_css_class("destructive-action"));
        EXPECT_FALSE(button->has_css_class("suggested-action"));
        program.click(*button);
        RunningProgram::until("the user has agreed", [&] { return agreed->has_value(); });
        EXPECT_TRUE(**agreed);
    });
}

TEST_F(SheetLook, NameThatWrapsGetsNoHyphenOfOurs) {
    run([&] {
        const std::string name(64, 'W');
        startDeletion(name);
        auto* label = labelSaying(question(), name);
        ASSERT_NE(label, nullptr);
        EXPECT_TRUE(isBrokenWithoutHyphen(*label));
    });
}

TEST_F(SheetLook, EnterDeletesNothing) {
    run([&] {
        const auto agreed = startDeletion();
        program.screen.press(GDK_KEY_Return);
        RunningProgram::until("the question is answered", [&] { return agreed->has_value(); });
        EXPECT_FALSE(**agreed);
    });
}

TEST_F(SheetLook, SeveralAccountsAreAGroup) {
    run([&] {
        startConsent({"ada@example.com", "grace@example.com"});
        EXPECT_TRUE(withClass(window(), "kelo-group"));
    });
}

TEST_F(SheetLook, NameHasATooltipOnlyWhereItIsCut) {
    run([&] {
        const std::string tooLong(64, 'W');
        startConsent({"ada@example.com", tooLong});
        program.untilDrawn(window());
        for (auto* label : visibleIn<Gtk::Label>(window())) {
            const std::string name = label->get_text().raw();
            if (name != "ada@example.com" && name != tooLong)
                continue;
            const auto tooltip = gobject::GObjectPointer<GtkTooltip>::adopt(
                GTK_TOOLTIP(g_object_new(GTK_TYPE_TOOLTIP, nullptr)));
            gboolean isShown = FALSE;
            g_signal_emit_by_name(label->gobj(), "query-tooltip", 1, 1, FALSE, tooltip.get(),
                                  &isShown);
            EXPECT_EQ(isShown != FALSE, name == tooLong) << name;
        }
    });
}

TEST_F(SheetLook, PageBehindItIsDimmed) {
    run([&] {
        const auto page = program.boxOf(program.app.page->area);
        const auto shown = [&] { return program.screen.colorAt(page.x + 20, page.y + 20); };
        const auto before = shown();
        startConsent();
        window();
        RunningProgram::until("the page is dimmed", [&] {
            const auto now = shown();
            return now.red < before.red * 3 / 4 && now.blue < before.blue * 3 / 4;
        });
        sheet.reset();
        RunningProgram::until("the page is as before", [&] { return shown() == before; });
    });
}

} // namespace
} // namespace kelo::tests
