#include "component/gtk/PasskeysWindowFixture.h"
#include "linux/gobject/GObjectPointer.h"

#include <gtkmm/adjustment.h>
#include <gtkmm/scrolledwindow.h>

namespace kelo::tests {
namespace {

using inventory::Finding;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* menuLabel = "Passkeys on This Computer…";

class PasskeysWindow : public PasskeysWindowFixture {};

TEST_F(PasskeysWindow, IsInTheMenuOfTheProgramAndThereOnce) {
    program.run([&] {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] {
            return labelSaying(program.window("Kelo"), menuLabel) != nullptr;
        });
        program.click(*labelSaying(program.window("Kelo"), menuLabel));
        program.untilActive(window());
        program.host.openWindow("main");
        program.untilActive(program.window("Kelo"));
        program.host.openPasskeys();
        program.untilActive(window());
        EXPECT_EQ(program.windowsOnScreen().size(), 2U);
    });
}

TEST_F(PasskeysWindow, SaysOfEachWhatIsKnown) {
    inventory->add("ada@example.com");
    auto& used = inventory->add("grace@example.com");
    used.lastUsed = used.made + std::chrono::days(2);
    used.isInChip = true;
    used.isAccepted = true;
    whileOpen([&] {
        const std::string freshDays = "Made on 11/14/23 · Never used";
        const std::string freshState = "In software · Not yet accepted by the service";
        const std::string knownDays = "Made on 11/14/23 · Last used on 11/16/23";
        const std::string knownState = "In the security chip · Accepted by the service";
        const char* service = "assistant.example.com";
        EXPECT_THAT(texts(),
                    ElementsAre("ada@example.com", service, freshDays, freshState, "Delete…",
                                "grace@example.com", service, knownDays, knownState, "Delete…"));
        const auto rows = visibleIn<Gtk::ListBoxRow>(window());
        ASSERT_EQ(rows.size(), 2U);
        EXPECT_TRUE(isNamed(*rows[0], "ada@example.com, assistant.example.com, " + freshDays +
                                          " · " + freshState));
        EXPECT_TRUE(isNamed(*rows[1], "grace@example.com, assistant.example.com, " + knownDays +
                                          " · " + knownState));
        EXPECT_TRUE(isNamed(*withClass(window(), "kelo-group"), title));
        EXPECT_EQ(focused(), "ada@example.com");
    });
}

TEST_F(PasskeysWindow, EmptyListSaysWhereAPasskeyIsRegistered) {
    whileOpen([&] {
        EXPECT_THAT(texts(),
                    ElementsAre(none, "Sign in with your password, then register one from the "
                                      "Account menu of Kelo’s window."));
        // A screen reader reads out what has the keyboard.
        ASSERT_NE(window().get_focus(), nullptr);
        EXPECT_TRUE(isNamed(*window().get_focus(), texts()[0] + " " + texts()[1]));
    });
}

TEST_F(PasskeysWindow, TroubleWithTheFileIsSaidInPlaceOfTheList) {
    inventory->add("ada@example.com");
    whileOpen([&] {
        inventory->failure = "The file is damaged.";
        lookAgain();
        EXPECT_THAT(texts(), ElementsAre("The file is damaged."));
        EXPECT_TRUE(isNamed(*window().get_focus(), "The file is damaged."));
        inventory->failure = std::nullopt;
        lookAgain();
        EXPECT_THAT(texts(), Contains("ada@example.com"));
        EXPECT_THAT(texts(), Not(Contains("The file is damaged.")));
        EXPECT_EQ(focused(), "ada@example.com");
    });
}

TEST_F(PasskeysWindow, NamesCannotHideOrTurnAroundWhatStandsBesideThem) {
    inventory->add("ada\u202E\n\u200Bexample\tcom" + std::string(200, 'x')).service =
        "assistant\u202E.example.com";
    whileOpen([&] {
        for (const auto& text : texts()) {
            EXPECT_EQ(text.find("\u202E"), std::string::npos) << text;
            EXPECT_EQ(text.find('\n'), std::string::npos) << text;
            EXPECT_LT(text.size(), 100U) << text;
        }
        const auto account = texts().front();
        EXPECT_TRUE(buttonNamed(window(), "Delete the passkey of " + account +
                                              " for assistant.example.com…"));
    });
}

TEST_F(PasskeysWindow, LongNameIsCutInItsMiddleAndToldByItsTooltip) {
    const std::string account(64, 'W');
    inventory->add("ada@example.com");
    inventory->add(account);
    whileOpen([&] {
        for (const auto& name : {std::string("ada@example.com"), account}) {
            auto& label = *labelSaying(window(), name);
            EXPECT_EQ(label.get_ellipsize(), Pango::EllipsizeMode::MIDDLE);
            const auto tooltip = gobject::GObjectPointer<GtkTooltip>::adopt(
                GTK_TOOLTIP(g_object_new(GTK_TYPE_TOOLTIP, nullptr)));
            gboolean isShown = FALSE;
            g_signal_emit_by_name(label.gobj(), "query-tooltip", 1, 1, FALSE, tooltip.get(),
                                  &isShown);
            EXPECT_EQ(isShown != FALSE, name == account) << name;
        }
        EXPECT_LT(program.boxOf(window()).width, program.screen.width());
        const auto ends = [&](const std::string& of) {
            const auto box = program.boxOf(deleteButton(of));
            return box.x + box.width;
        };
        EXPECT_EQ(ends(account), ends("ada@example.com"));
    });
}

TEST_F(PasskeysWindow, NameThatRunsFromTheRightBeginsWhereTheOthersDo) {
    inventory->add("ada@example.com");
    inventory->add("עדה לאבלייס");
    whileOpen([&] {
        EXPECT_EQ(program.boxOf(*labelSaying(window(), "עדה לאבלייס")).x,
                  program.boxOf(*labelSaying(window(), "ada@example.com")).x);
    });
}

TEST_F(PasskeysWindow, HundredsAreScrolledAndReachedByTheKeyboard) {
    for (int number = 0; number < 300; ++number)
        inventory->add("account " + std::to_string(number));
    whileOpen([&] {
        EXPECT_LT(program.boxOf(window()).height, program.screen.height());
        const auto views = visibleIn<Gtk::ScrolledWindow>(window());
        ASSERT_EQ(views.size(), 1U);
        const auto place = views.front()->get_vadjustment();
        EXPECT_EQ(place->get_value(), 0);
        program.screen.press(GDK_KEY_End);
        RunningProgram::until("the last row has the keyboard",
                              [&] { return focused() == "account 299"; });
        RunningProgram::until("it is in sight", [&] {
            return place->get_value() >= place->get_upper() - place->get_page_size() - 20;
        });
        double before = 0;
        RunningProgram::until("it has come to rest", [&] {
            before = place->get_value();
            program.untilDrawn(window());
            return place->get_value() == before;
        });
        // Nor does the list jump when it is looked at again and another one has come.
        inventory->add("account 300");
        lookAgain();
        program.untilDrawn(window());
        EXPECT_EQ(focused(), "account 299");
        EXPECT_NEAR(place->get_value(), before, 1);
    });
}

TEST_F(PasskeysWindow, ClosedWhileItReadsItForgetsTheAnswer) {
    inventory->add("ada");
    inventory->holdsAnswers = true;
    program.run([&] {
        program.host.openPasskeys();
        program.untilActive(window());
        EXPECT_THAT(texts(), ElementsAre("One moment…"));
        window().close();
        for (const auto& turn : std::exchange(inventory->held, {}))
            turn.resume();
        RunningProgram::settle();
        EXPECT_FALSE(isOpen());
    });
}

TEST_F(PasskeysWindow, LooksAgainWhenItGetsTheKeyboard) {
    inventory->add("ada");
    whileOpen([&] {
        const auto* kept = visibleIn<Gtk::ListBoxRow>(window()).front();
        inventory->all.insert(inventory->all.begin(), inventory->all.front());
        inventory->all.front().account = "grace";
        inventory->all.front().credentialId = Bytes{1};
        lookAgain();
        EXPECT_THAT(texts(), Contains("grace"));
        const auto rows = visibleIn<Gtk::ListBoxRow>(window());
        ASSERT_EQ(rows.size(), 2U);
        EXPECT_EQ(rows[1], kept) << "what has not changed stays";
        EXPECT_EQ(focused(), "ada");
        inventory->all[1].isAccepted = true;
        lookAgain();
        EXPECT_THAT(texts(), Contains(testing::HasSubstr("· Accepted by the service")));
        EXPECT_EQ(visibleIn<Gtk::ListBoxRow>(window()).size(), 2U);
    });
}

TEST_F(PasskeysWindow, ChangeWhileItReadsIsNotMissed) {
    inventory->holdsAnswers = true;
    program.run([&] {
        program.host.openPasskeys();
        program.untilActive(window());
        RunningProgram::until("it reads", [&] { return inventory->held.size() == 1; });
        inventory->holdsAnswers = false;
        program.host.openWindow("main");
        program.untilActive(program.window("Kelo"));
        program.host.openPasskeys();
        program.untilActive(window());
        EXPECT_EQ(inventory->reads, 1) << "one reading at a time";
        std::exchange(inventory->held, {}).front().resume();
        RunningProgram::until("it reads again", [&] { return inventory->reads == 2; });
    });
}

TEST_F(PasskeysWindow, SaysWhatPasskeysNeedHereAndNothingWhereAllIsWell) {
    inventory->add("ada");
    whileOpen([&] {
        EXPECT_EQ(withClass(window(), "kelo-findings"), nullptr);
        inventory->found = {
            {"keyring", Finding::State::trouble, "Keyring", "No keyring is running."},
            {"chip", Finding::State::notice, "Security chip", "New passkeys are in software."}};
        lookAgain();
        auto* findings = withClass(window(), "kelo-findings");
        ASSERT_NE(findings, nullptr);
        EXPECT_TRUE(isNamed(*findings, "What passkeys need here"));
        EXPECT_THAT(textsIn(*findings),
                    ElementsAre("Keyring", "No keyring is running.", "Security chip",
                                "New passkeys are in software."));
        const auto rows = visibleIn<Gtk::ListBoxRow>(*findings);
        EXPECT_TRUE(isNamed(*rows.front(), "Keyring: No keyring is running."));
        EXPECT_TRUE(labelSaying(*findings, "Keyring")->has_css_class("kelo-red"));
        EXPECT_FALSE(labelSaying(*findings, "Security chip")->has_css_class("kelo-red"));
        inventory->found.clear();
        lookAgain();
        EXPECT_EQ(withClass(window(), "kelo-findings"), nullptr);
    });
}

TEST_F(PasskeysWindow, ManyFindingsLeaveTheListItsPlace) {
    inventory->add("ada");
    std::string sentence;
    for (int word = 0; word < 200; ++word)
        sentence += "word ";
    inventory->found = {{"keyring", Finding::State::trouble, "Keyring", sentence}};
    whileOpen([&] {
        RunningProgram::until("they are shown",
                              [&] { return withClass(window(), "kelo-findings"); });
        program.untilDrawn(window());
        EXPECT_GT(program.boxOf(*visibleIn<Gtk::ScrolledWindow>(window()).front()).height,
                  program.boxOf(window()).height / 3);
    });
}

TEST_F(PasskeysWindow, TabGoesFromTheRowToItsButtonAndOnToTheFindings) {
    inventory->add("ada");
    inventory->found = {{"chip", Finding::State::notice, "Security chip", "There is none."}};
    whileOpen([&] {
        RunningProgram::until("all is shown", [&] { return withClass(window(), "kelo-findings"); });
        ASSERT_EQ(focused(), "ada");
        program.screen.press(GDK_KEY_Tab);
        RunningProgram::until("the button has the keyboard",
                              [&] { return deleteButton("ada").has_focus(); });
        program.screen.press(GDK_KEY_Tab);
        RunningProgram::until("the finding has the keyboard",
                              [&] { return focused() == "Security chip"; });
        program.screen.press(GDK_KEY_Delete);
        RunningProgram::settle();
        EXPECT_THAT(inventory->asked, IsEmpty());
    });
}

TEST_F(PasskeysWindow, ClosesByEscapeAndByTheKeyForWindows) {
    inventory->add("ada");
    whileOpen([&] {
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("it is closed", [&] { return !isOpen(); });
        open();
        program.screen.press(GDK_KEY_w, {GDK_KEY_Control_L});
        RunningProgram::until("it is closed", [&] { return !isOpen(); });
    });
}

TEST(PasskeysMenu, HasNoEntryWhereThereIsNoList) {
    RunningProgram program;
    program.run([&] {
        program.screen.press(GDK_KEY_F10);
        RunningProgram::until("the menu is open", [&] {
            return labelSaying(program.window("Kelo"), "Settings…") != nullptr;
        });
        EXPECT_EQ(labelSaying(program.window("Kelo"), menuLabel), nullptr);
        program.screen.press(GDK_KEY_Escape);
        RunningProgram::until("the menu is closed", [&] {
            return labelSaying(program.window("Kelo"), "Settings…") == nullptr;
        });
    });
}

} // namespace
} // namespace kelo::tests
