#include "EvdevDevicesFixture.h"

#include "component/passkey/SessionBus.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

// The devices as udev describes them, and the session as the login manager does, which dbusmock
// plays.

namespace kelo {

using platform::modifier::control;
using platform::modifier::option;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr const char* managerName = "org.freedesktop.login1";
/// What the caller asks for; the stand-in takes it for the session's name.
constexpr const char* ownSession = "auto";
constexpr const char* sessionPath = "/org/freedesktop/login1/session/auto";

class EvdevLogin : public EvdevDevices {
protected:
    EvdevLogin() {
        g_setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), TRUE);
        source.onOtherPress([this] { heard.push_back(press); });
    }

    void logIn(const std::string& seat) {
        manager = Child({"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"},
                        {"DBUS_SYSTEM_BUS_ADDRESS=" + bus.address()});
        ASSERT_TRUE(bus.waitForName(managerName));
        command("/org/freedesktop/login1", "AddSession",
                g_variant_new("(ssusb)", ownSession, seat.c_str(), 1000U, "somebody", TRUE));
    }
    /// Another session comes to the screen, or this one comes back.
    void setActive(bool active) const {
        command(
            sessionPath, "UpdateProperties",
            g_variant_new_parsed("('org.freedesktop.login1.Session', {'Active': <%b>})", active));
    }
    /// Presses a key as the kernel does: whoever asks it is told what is down, too.
    bool hold(const std::string& name, int code) {
        devices.setDown(name, {code});
        return devices.type(name, down(code) + report());
    }
    void command(const char* path, const char* method, GVariant* parameters) const {
        GError* error = nullptr;
        const GVariantPointer answer(g_dbus_connection_call_sync(
            bus.connection(), managerName, path, "org.freedesktop.DBus.Mock", method, parameters,
            nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, &error));
        if (const gobject::GErrorPointer failure(error); failure)
            ADD_FAILURE() << method << ": " << failure->message;
    }

    test::TemporaryFolder folder;
    SessionBus bus{folder.path()};
    Child manager;
};

EmulatedDevice keyboardOf(const std::string& seat) {
    auto described = keyboard();
    described.seat = seat;
    return described;
}

} // namespace

TEST_F(EvdevLogin, KeyboardsOfAnotherSeatDoNotCount) {
    logIn("seat0");
    devices.plug("event1", keyboardOf("seat1"));
    devices.plug("event2", keyboard());
    EXPECT_TRUE(source.isAvailable());
    ASSERT_TRUE(start());
    ASSERT_TRUE(devices.type("event1", chordDown));
    ASSERT_TRUE(hold("event2", KEY_LEFTALT));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(option));
}

TEST_F(EvdevLogin, KeyboardsOfTheSessionsOwnSeatCount) {
    logIn("seat1");
    devices.plug("event1", keyboardOf("seat1"));
    devices.plug("event2", keyboard());
    EXPECT_TRUE(source.isAvailable());
    ASSERT_TRUE(start());
    ASSERT_TRUE(devices.type("event2", chordDown));
    ASSERT_TRUE(hold("event1", KEY_LEFTALT));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(option));
}

TEST_F(EvdevLogin, StatusKnowsWhichSeatIsTheSessions) {
    logIn("seat1");
    devices.plug("event2", keyboard());
    EXPECT_THAT(source.availability().reason, HasSubstr("belong to another seat"));
    devices.plug("event3", keyboardOf("seat1"));
    EXPECT_TRUE(source.isAvailable());
}

TEST_F(EvdevLogin, SeatThatUdevNamesAMomentAfterTheNodeAppearedIsHeeded) {
    logIn("seat0");
    devices.plug("event1", keyboard());
    ASSERT_TRUE(start());
    devices.plug("event2", keyboard());
    ASSERT_TRUE(
        ScopedMainLoop::runUntil([&] { return devices.device("event2").wasAskedWhatIsDown; }));
    ASSERT_TRUE(hold("event2", KEY_LEFTCTRL));
    ASSERT_TRUE(waitFor(1));
    devices.assign("event2", "seat1");
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control, press, 0));
    ASSERT_TRUE(hold("event1", KEY_LEFTALT));
    ASSERT_TRUE(waitFor(4));
    EXPECT_EQ(heard.back(), option);
}

TEST_F(EvdevLogin, KeyboardThatUdevGivesToThisSeatIsRead) {
    logIn("seat0");
    devices.plug("event1", keyboard());
    devices.plug("event2", keyboardOf("seat1"));
    ASSERT_TRUE(start());
    devices.forgetWhatWasAsked("event2");
    devices.assign("event2", "seat0");
    ASSERT_TRUE(
        ScopedMainLoop::runUntil([&] { return devices.device("event2").wasAskedWhatIsDown; }));
    ASSERT_TRUE(hold("event2", KEY_LEFTALT));
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(heard, ElementsAre(option));
}

TEST_F(EvdevLogin, AnotherSessionOnTheScreenIsNoPressAndNothingThatWasHeldBeforeCountsAfter) {
    logIn("seat0");
    devices.plug("event1", keyboard());
    ASSERT_TRUE(start());
    devices.setDown("event1", {KEY_LEFTCTRL, KEY_LEFTALT});
    ASSERT_TRUE(devices.type("event1", down(KEY_LEFTCTRL) + down(KEY_LEFTALT) + report()));
    ASSERT_TRUE(waitFor(1));
    setActive(false);
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(heard, ElementsAre(control | option, press, 0));

    setActive(true);
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return session->isActive(); }));
    ASSERT_TRUE(devices.type("event1", up(KEY_LEFTCTRL) + up(KEY_LEFTALT) + report()));
    ASSERT_TRUE(hold("event1", KEY_RIGHTCTRL));
    ASSERT_TRUE(waitFor(4));
    EXPECT_THAT(heard, ElementsAre(control | option, press, 0, control));
}

} // namespace kelo
