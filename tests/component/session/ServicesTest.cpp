// What the services on the buses say, each on a bus of its own.
#include "component/bus/StartingBus.h"
#include "component/session/SessionFixture.h"
#include "component/session/StandInServices.h"
#include "linux/session/LoginSession.h"
#include "linux/session/ScreenSaver.h"
#include "testing/TemporaryFolder.h"

#include <algorithm>
#include <optional>
#include <ostream>

namespace kelo::test {

namespace {

class Services : public testing::Test {
protected:
    bool waitUntilLocked(const session::LockSource& source) const {
        return ScopedMainLoop::runUntil([&] { return source.isLocked(); });
    }
    bool waitUntilUnlocked(const session::LockSource& source) const {
        return ScopedMainLoop::runUntil([&] { return source.isCertain() && !source.isLocked(); });
    }

    /// Calls in the same way as what is under test does. All that was sent before on this road, and
    /// all that this led to, has been dealt with when the last call is answered.
    void settle(const char* path, const char* interface, const char* method,
                const char* arguments = "()") {
        const std::string owner = g_dbus_connection_get_unique_name(peer.connection());
        const bus::Calls calls;
        for (int times = 0; times < 3; ++times) {
            bool isAnswered = false;
            bus->whenOpen([&](const bus::Connection& connection) {
                calls.call(connection, {owner, path, interface}, method,
                           g_variant_new_parsed(arguments),
                           [&](const auto&, const auto&) { isAnswered = true; });
            });
            ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return isAnswered; }));
        }
    }

    ScopedMainLoop loop;
    TemporaryFolder folder;
    SessionBus peer{folder.path()};
    std::shared_ptr<bus::SharedConnection> bus =
        std::make_shared<bus::SharedConnection>(peer.address());
    int changes = 0;
    session::LockSource::Changed changed = [this] { ++changes; };
};

class LoginSession : public Services {
protected:
    std::optional<StandInLoginManager> manager;
    std::optional<session::LoginSession> session;

    void settleManager() {
        settle("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "GetSession",
               "('auto',)");
    }
    void follow() {
        manager.emplace(peer);
        session.emplace(*bus, changed);
        ASSERT_TRUE(waitUntilUnlocked(*session));
    }
};

struct ScreenSaverName {
    const char* name;
    const char* path;
};
void PrintTo(const ScreenSaverName& saver, std::ostream* out) {
    *out << saver.name;
}

class ScreenSaver : public Services, public testing::WithParamInterface<ScreenSaverName> {
protected:
    std::vector<std::unique_ptr<session::LockSource>> all;

    bool isLocked() const {
        return std::ranges::any_of(all, [](const auto& each) { return each->isLocked(); });
    }
    bool isCertain() const {
        return std::ranges::all_of(all, [](const auto& each) { return each->isCertain(); });
    }
    void follow() { all = session::screenSavers(*bus, changed); }
};

} // namespace

TEST_F(LoginSession, NothingIsCertainBeforeItHasAnswered) {
    manager.emplace(peer);
    session.emplace(*bus, changed);
    EXPECT_FALSE(session->isCertain());
    EXPECT_FALSE(session->isLocked());
    EXPECT_TRUE(waitUntilUnlocked(*session));
    EXPECT_GT(changes, 0);
}

TEST_F(LoginSession, LockedHintIsALock) {
    follow();
    manager->set("LockedHint", true);
    EXPECT_TRUE(waitUntilLocked(*session));
    manager->set("LockedHint", false);
    EXPECT_TRUE(waitUntilUnlocked(*session));
}

TEST_F(LoginSession, AnotherSessionOnTheScreenIsALock) {
    follow();
    manager->set("Active", false);
    EXPECT_TRUE(waitUntilLocked(*session));
    manager->set("Active", true);
    EXPECT_TRUE(waitUntilUnlocked(*session));
}

TEST_F(LoginSession, SeatIsTheSessions) {
    manager.emplace(peer);
    manager->seat = "seat7";
    session.emplace(*bus, changed);
    EXPECT_EQ(session->seat(), "seat0") << "nobody has answered yet";
    ASSERT_TRUE(waitUntilUnlocked(*session));
    EXPECT_EQ(session->seat(), "seat7");
    manager.reset();
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return session->seat() == "seat0"; }));
}

TEST_F(LoginSession, SessionWithoutASeatHasNone) {
    manager.emplace(peer);
    manager->seat = "";
    session.emplace(*bus, changed);
    ASSERT_TRUE(waitUntilUnlocked(*session));
    EXPECT_EQ(session->seat(), "");
}

TEST_F(LoginSession, SeatThatNobodyKnowsIsTheFirst) {
    follow();
    EXPECT_EQ(session->seat(), "seat0");
}

TEST_F(LoginSession, IsActiveUnlessAnotherSessionHasTheScreen) {
    follow();
    EXPECT_TRUE(session->isActive());
    manager->set("LockedHint", true);
    ASSERT_TRUE(waitUntilLocked(*session));
    EXPECT_TRUE(session->isActive()) << "a lock is on the same screen";
    manager->set("Active", false);
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return !session->isActive(); }));
}

TEST_F(LoginSession, WhoIsToldOfAChangeMayLetItGo) {
    manager.emplace(peer);
    std::unique_ptr<session::SeatSession> followed;
    bool isFunctionGone = false;
    bool wasFunctionKept = false;
    const auto note = [&](void*) { isFunctionGone = true; };
    followed = std::make_unique<session::LoginSession>(
        *bus, [&, held = std::shared_ptr<void>(nullptr, note)] {
            followed.reset();
            wasFunctionKept = !isFunctionGone;
        });
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return isFunctionGone; }));
    EXPECT_TRUE(wasFunctionKept);
    EXPECT_FALSE(followed);
}

TEST_F(LoginSession, LockThatWasThereBeforeUsIsSeen) {
    manager.emplace(peer);
    manager->properties["LockedHint"] = true;
    session.emplace(*bus, changed);
    EXPECT_TRUE(waitUntilLocked(*session));
}

TEST_F(LoginSession, ChangeWithoutAValueIsAskedFor) {
    follow();
    manager->set("LockedHint", true, false);
    manager->invalidate("LockedHint");
    EXPECT_TRUE(waitUntilLocked(*session));
}

TEST_F(LoginSession, LockOfSomebodyElsesSessionIsNone) {
    follow();
    manager->changeSomebodyElses("LockedHint", true);
    // It arrives in order: what comes after it has its effect after it.
    const int before = changes;
    manager->set("LockedHint", false);
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return changes > before; }));
    EXPECT_FALSE(session->isLocked());
    EXPECT_EQ(changes, before + 1);
}

TEST_F(LoginSession, AnotherProgramCannotPlayIt) {
    follow();
    const auto stranger =
        gobject::GObjectPointer<GDBusConnection>::adopt(g_dbus_connection_new_for_address_sync(
            peer.address().c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr));
    ASSERT_TRUE(stranger);
    GVariantBuilder values;
    g_variant_builder_init(&values, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&values, "{sv}", "LockedHint", g_variant_new_boolean(TRUE));
    g_dbus_connection_emit_signal(
        stranger.get(), nullptr, "/org/freedesktop/login1/session/_37",
        "org.freedesktop.DBus.Properties", "PropertiesChanged",
        g_variant_new("(sa{sv}as)", "org.freedesktop.login1.Session", &values, nullptr), nullptr);
    // The bus answers this after it has handed on the signal.
    const GVariantPointer routed(g_dbus_connection_call_sync(
        stranger.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping", nullptr,
        nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    ASSERT_TRUE(routed);
    const int before = changes;
    manager->set("Active", true);
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return changes > before; }));
    EXPECT_FALSE(session->isLocked());
}

TEST_F(LoginSession, WithoutASessionOfOursNothingIsLocked) {
    manager.emplace(peer);
    manager->hasSession = false;
    session.emplace(*bus, changed);
    EXPECT_TRUE(waitUntilUnlocked(*session));
}

TEST_F(LoginSession, WithoutAManagerNothingIsLocked) {
    session.emplace(*bus, changed);
    EXPECT_TRUE(waitUntilUnlocked(*session));
}

TEST_F(LoginSession, ManagerThatGoesUnlocksAndOneThatComesIsAsked) {
    follow();
    manager->set("LockedHint", true);
    ASSERT_TRUE(waitUntilLocked(*session));
    manager.reset();
    EXPECT_TRUE(waitUntilUnlocked(*session));
    manager.emplace(peer);
    manager->properties["LockedHint"] = true;
    EXPECT_TRUE(waitUntilLocked(*session));
}

TEST_F(LoginSession, ManagerThatGaveUpItsNameIsNotHeard) {
    follow();
    manager->giveUpName();
    ASSERT_TRUE(peer.waitForNoName("org.freedesktop.login1"));
    settleManager();
    manager->set("LockedHint", true);
    settleManager();
    EXPECT_FALSE(session->isLocked());
}

TEST_F(LoginSession, LateAnswerOfAManagerThatGaveUpItsNameDoesNotCount) {
    manager.emplace(peer);
    manager->properties["LockedHint"] = true;
    manager->isSilent = true;
    session.emplace(*bus, changed);
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return manager->questions == 1; }));
    manager->giveUpName();
    ASSERT_TRUE(waitUntilUnlocked(*session));
    manager->isSilent = false;
    manager->answerLate();
    settleManager();
    EXPECT_FALSE(session->isLocked());
}

TEST_F(LoginSession, BusThatIsNotThereLocksNothing) {
    for (const char* const address : {"", "unix:path=/nowhere/at/all", "nonsense"}) {
        const auto missing = std::make_shared<bus::SharedConnection>(address);
        const session::LoginSession asked(*missing, changed);
        EXPECT_FALSE(asked.isCertain()) << address;
        EXPECT_TRUE(waitUntilUnlocked(asked)) << address;
    }
}

TEST_F(LoginSession, ManagerThatNeverAnswersLeavesItUncertainAndMayBeLeft) {
    manager.emplace(peer);
    manager->isSilent = true;
    session.emplace(*bus, changed);
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return manager->questions == 1; }));
    EXPECT_FALSE(session->isCertain());
    session.reset();
}

TEST_F(Services, AreNotStartedToBeFollowed) {
    const std::vector<std::string> names{"org.freedesktop.login1", "org.freedesktop.ScreenSaver",
                                         "org.gnome.ScreenSaver",  "org.cinnamon.ScreenSaver",
                                         "org.mate.ScreenSaver",   "org.xfce.ScreenSaver"};
    auto services = names;
    services.emplace_back("org.example.Last");
    const StartingBus starting(folder.path(), services);
    const auto there = std::make_shared<bus::SharedConnection>(starting.address());
    auto all = session::screenSavers(*there, changed);
    all.push_back(std::make_unique<session::LoginSession>(*there, changed));
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] {
        return std::ranges::all_of(all, [](const auto& each) { return each->isCertain(); });
    }));
    ASSERT_TRUE(starting.start("org.example.Last"));
    for (const std::string& name : names)
        EXPECT_FALSE(starting.hasStarted(name)) << name;
}

TEST_F(Services, OfTheEnvironmentsBusesAreFollowedByTheSession) {
    StandInLoginManager manager(peer);
    StandInScreenSaver saver(peer, "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver");
    g_setenv("DBUS_SYSTEM_BUS_ADDRESS", peer.address().c_str(), TRUE);
    g_setenv("DBUS_SESSION_BUS_ADDRESS", peer.address().c_str(), TRUE);
    session::LinuxUserSession session;
    SessionQuestions questions(session);
    int locks = 0;
    const auto observation = session.observeLocking([&] { ++locks; });
    EXPECT_FALSE(questions.isUnlocked()) << "nobody has answered yet";
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return questions.performed == 1; }));
    manager.set("LockedHint", true);
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return locks == 1; }));
    EXPECT_FALSE(questions.isUnlocked());
    manager.set("LockedHint", false);
    EXPECT_TRUE(until([&] { return questions.isUnlocked(); }));
    saver.set(true);
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return locks == 2; }));
    EXPECT_FALSE(questions.isUnlocked());
}

TEST_P(ScreenSaver, ActiveOneIsALockUntilItIsNotAnyMore) {
    StandInScreenSaver saver(peer, GetParam().name, GetParam().path);
    follow();
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return isCertain(); }));
    EXPECT_FALSE(isLocked());
    saver.set(true);
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return isLocked(); }));
    saver.set(false);
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return !isLocked(); }));
}

TEST_P(ScreenSaver, OneThatWasActiveBeforeUsIsSeen) {
    StandInScreenSaver saver(peer, GetParam().name, GetParam().path);
    saver.active = true;
    follow();
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return isLocked(); }));
}

TEST_P(ScreenSaver, OneThatGoesUnlocks) {
    auto saver = std::make_unique<StandInScreenSaver>(peer, GetParam().name, GetParam().path);
    saver->active = true;
    follow();
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return isLocked(); }));
    saver.reset();
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return !isLocked() && isCertain(); }));
}

TEST_P(ScreenSaver, OneThatDoesNotKnowCountsAsInactive) {
    StandInScreenSaver saver(peer, GetParam().name, GetParam().path);
    saver.knowsIt = false;
    follow();
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return isCertain(); }));
    EXPECT_FALSE(isLocked());
}

TEST_P(ScreenSaver, EveryObjectOfItIsHeard) {
    StandInScreenSaver saver(peer, GetParam().name, GetParam().path);
    follow();
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return isCertain(); }));
    saver.setFrom("/ScreenSaver", true);
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return isLocked(); }));
}

TEST_P(ScreenSaver, OneThatGaveUpItsNameIsNotHeard) {
    StandInScreenSaver saver(peer, GetParam().name, GetParam().path);
    saver.active = true;
    follow();
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return isLocked(); }));
    saver.giveUpName();
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return !isLocked(); }));
    saver.set(true);
    settle(GetParam().path, GetParam().name, "GetActive");
    EXPECT_FALSE(isLocked());
}

TEST_P(ScreenSaver, LateAnswerOfOneThatGaveUpItsNameDoesNotCount) {
    StandInScreenSaver saver(peer, GetParam().name, GetParam().path);
    saver.active = true;
    saver.isSilent = true;
    follow();
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return saver.questions == 1; }));
    saver.giveUpName();
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return isCertain(); }));
    saver.isSilent = false;
    saver.answerLate();
    settle(GetParam().path, GetParam().name, "GetActive");
    EXPECT_FALSE(isLocked());
}

INSTANTIATE_TEST_SUITE_P(
    Each, ScreenSaver,
    testing::Values(ScreenSaverName{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"},
                    ScreenSaverName{"org.gnome.ScreenSaver", "/org/gnome/ScreenSaver"},
                    ScreenSaverName{"org.cinnamon.ScreenSaver", "/org/cinnamon/ScreenSaver"},
                    ScreenSaverName{"org.mate.ScreenSaver", "/org/mate/ScreenSaver"},
                    ScreenSaverName{"org.xfce.ScreenSaver", "/org/xfce/ScreenSaver"}));

} // namespace kelo::test
