#include "PortalFixture.h"

#include "component/bus/StartingBus.h"
#include "linux/input/portal/PortalAvailability.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kelo {

using input::PortalModifierSource;
using platform::ModifierFlags;
using platform::modifier::control;
using platform::modifier::option;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

TEST_F(PortalSource, AsksForOneShortcutAndTakesItsPressForTheChord) {
    startPortal();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    EXPECT_THAT(asked(), ElementsAre("CreateSession", bound));
    press();
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(control | option));
    release();
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(control | option, 0));
}

TEST_F(PortalSource, SaysWhoAsksBeforeAnythingElseWhereThePortalWantsToKnow) {
    startPortal(R"({"registry": true})");
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(3));
    EXPECT_THAT(asked(), ElementsAre("Register app.kelo.Kelo", "CreateSession", bound));
}

TEST_F(PortalSource, RepeatedPressesAreOne) {
    startPortal();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    press();
    release();
    release();
    press();
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control | option, 0, control | option));
}

TEST_F(PortalSource, OtherShortcutsAndOtherSessionsAreNotOurs) {
    startPortal();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    press("another");
    command("PressInAnotherSession");
    release();
    press();
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(control | option)) << "the first press that was heard is ours";
    release();
    ASSERT_TRUE(waitFor(2));
}

TEST_F(PortalSource, AnotherProgramCannotPlayThePortal) {
    startPortal();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    const auto path = command("Session");
    ASSERT_TRUE(path);
    const char* session = nullptr;
    g_variant_get(path.get(), "(&s)", &session);
    const auto pretend = [&](const char* signal) {
        g_dbus_connection_emit_signal(
            bus.connection(), nullptr, portalPath, "org.freedesktop.portal.GlobalShortcuts", signal,
            g_variant_new_parsed("(%o, 'widget', uint64 0, @a{sv} {})", session), nullptr);
    };
    pretend("Activated");
    pretend("Deactivated");
    press();
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(control | option));
}

TEST_F(PortalSource, AUserWhoRefusesIsNotAskedAgain) {
    startPortal(R"({"refuses": "BindShortcuts"})");
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(3));
    EXPECT_THAT(asked(), ElementsAre("CreateSession", bound, "Close session"));
    press();
    stopPortal();
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(PortalSource, AShortcutThatIsNamedInTheAnswerIsBoundWhateverItsNumber) {
    startPortal(R"({"misnumbers": true})");
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(control | option));
    EXPECT_THAT(asked(), ElementsAre("CreateSession", bound)) << "the session is kept";
}

TEST_F(PortalSource, APortalThatBindsTheShortcutWithTheSessionIsNotAskedOnceMore) {
    startPortal(R"({"early": true})");
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(1));
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] {
        if (heard.empty())
            press();
        return !heard.empty();
    }));
    EXPECT_THAT(heard, ElementsAre(control | option));
    EXPECT_THAT(asked(), ElementsAre("CreateSession"));
}

TEST_F(PortalSource, ASessionThatIsRefusedIsTheEndOfIt) {
    startPortal(R"({"refuses": "CreateSession"})");
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(1));
    stopPortal();
    startPortal();
    ASSERT_TRUE(waitUntilAsked(2));
    EXPECT_THAT(asked(), ElementsAre("CreateSession", bound)) << "the next portal is asked";
}

TEST_F(PortalSource, AResponseToAnotherRequestIsNotOurs) {
    startPortal(R"({"confuses": true})");
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    EXPECT_THAT(asked(), ElementsAre("CreateSession", bound));
}

TEST_F(PortalSource, APortalWithoutShortcutsIsLeftAlone) {
    startPortal(R"({"shortcuts": false, "refuses": "CreateSession"})");
    const auto found = source->availability();
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("does not offer global shortcuts"));
    EXPECT_THAT(found.advice, HasSubstr("kelo --widget"));
}

TEST_F(PortalSource, SaysThatItDoesNotTellOfOtherKeys) {
    startPortal();
    const auto found = source->availability();
    EXPECT_TRUE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("does not tell of other keys"));
}

TEST_F(PortalSource, APortalThatComesLaterIsAsked) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(bus.waitForNoName(portalName));
    startPortal();
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
}

TEST_F(PortalSource, APortalThatIsRestartedIsAskedAnewAndReleasesTheKeys) {
    startPortal();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
    stopPortal();
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(control | option, 0));
    startPortal();
    ASSERT_TRUE(waitUntilAsked(2));
    EXPECT_THAT(asked(), ElementsAre("CreateSession", bound));
    press();
    ASSERT_TRUE(waitFor(3));
}

TEST_F(PortalSource, ASessionThatThePortalEndsIsAskedForOnceMore) {
    startPortal();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    const auto sessionName = [&] {
        const auto answer = command("Session");
        return std::string(
            answer ? g_variant_get_string(
                         GVariantPointer(g_variant_get_child_value(answer.get(), 0)).get(), nullptr)
                   : "");
    };
    const std::string first = sessionName();
    press();
    ASSERT_TRUE(waitFor(1));
    command("EndSession");
    ASSERT_TRUE(waitFor(2));
    EXPECT_THAT(heard, ElementsAre(control | option, 0)) << "its end releases the keys";
    ASSERT_TRUE(waitUntilAsked(4));
    EXPECT_EQ(sessionName(), first) << "some portals keep the user's keys under its name";
    EXPECT_THAT(first, testing::EndsWith("/Kelo"));
    EXPECT_THAT(asked(), ElementsAre("CreateSession", bound, "CreateSession", bound));

    press();
    ASSERT_TRUE(waitFor(3));
    command("EndSession");
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(asked(), SizeIs(4)) << "and not for ever";
}

TEST_F(PortalSource, ThePortalIsToldWhenNobodyWantsTheShortcutAnyMore) {
    startPortal();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
    source.reset();
    ASSERT_TRUE(waitUntilAsked(3));
    EXPECT_THAT(asked(), ElementsAre("CreateSession", bound, "Close session"));
    release();
    EXPECT_THAT(heard, SizeIs(1));
}

TEST_F(PortalSource, AQuestionBeforeTheUserIsTakenBackWhenNobodyWaitsForIt) {
    startPortal(R"({"ignores": "BindShortcuts"})");
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntilAsked(2));
    source.reset();
    ASSERT_TRUE(waitUntilAsked(4));
    EXPECT_THAT(asked(), testing::UnorderedElementsAre("CreateSession", bound, "Close session",
                                                       "Close BindShortcuts"));
}

TEST_F(PortalSource, MayGoAtAnyPointOfTheWay) {
    startPortal();
    bool arrived = false;
    for (int turns = 0; !arrived; ++turns) {
        source = std::make_unique<PortalModifierSource>(bus.address());
        const auto before = std::ranges::count(asked(), bound);
        ASSERT_TRUE(start());
        for (int turn = 0; turn < turns && !arrived; ++turn) {
            g_main_context_iteration(nullptr, TRUE);
            arrived = std::ranges::count(asked(), bound) > before;
        }
        source.reset();
        ASSERT_LT(turns, 1000);
    }
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(PortalSource, AHandlerMayLetTheSourceGo) {
    startPortal();
    ASSERT_TRUE(source->start([this](ModifierFlags flags) {
        heard.push_back(flags);
        source.reset();
    }));
    ASSERT_TRUE(waitUntilAsked(2));
    press();
    ASSERT_TRUE(waitFor(1));
    ASSERT_TRUE(waitUntilAsked(3));
}

TEST_F(PortalSource, IsAvailableWhereThePortalHasShortcutsAndAsksForNoneToSeeThat) {
    startPortal();
    const auto found = source->availability();
    EXPECT_TRUE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("Ctrl+Alt+Space"));
    EXPECT_THAT(found.advice, IsEmpty());
    EXPECT_THAT(asked(), IsEmpty());
    EXPECT_FALSE(source->coversOwnWindows());
}

TEST_F(PortalSource, SaysThatThereIsNoPortal) {
    const auto found = source->availability();
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("no portal"));
    EXPECT_THAT(found.advice, HasSubstr("xdg-desktop-portal"));
}

TEST_F(PortalSource, SaysThatThereIsNoSessionBus) {
    PortalModifierSource alone{""};
    EXPECT_FALSE(alone.isAvailable());
    EXPECT_THAT(alone.availability().reason, HasSubstr("no session bus"));
    EXPECT_FALSE(alone.start([](ModifierFlags) {}));
}

TEST_F(PortalSource, ABusThatIsGoneIsSaidAndDoesNoHarm) {
    PortalModifierSource lost{"unix:path=" + (folder.path() / "nothing").string()};
    EXPECT_THAT(lost.availability().reason, HasSubstr("does not answer"));
    ASSERT_TRUE(lost.start([](ModifierFlags) {}));
    startPortal();
}

TEST_F(PortalSource, APortalThatHangsIsGivenUp) {
    startPortal();
    portal.suspend();
    const auto found = input::portalAvailability(bus.address(), std::chrono::milliseconds(50));
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.reason, HasSubstr("does not answer"));
}

TEST_F(PortalSource, SaysThatThePortalIsNotRunningYetAndStartsItOnlyToUseIt) {
    const test::StartingBus starting(folder.path(), {portalName});
    PortalModifierSource idle(starting.address());
    EXPECT_TRUE(idle.isAvailable());
    EXPECT_THAT(idle.availability().reason, HasSubstr("is started when Kelo needs it"));
    EXPECT_FALSE(starting.hasStarted(portalName));
    ASSERT_TRUE(idle.start([](ModifierFlags) {}));
    EXPECT_TRUE(starting.waitUntilStarted(portalName));
}

} // namespace

} // namespace kelo
