#pragma once

#include "component/ScopedMainLoop.h"
#include "component/session/StandInServices.h"
#include "linux/bus/Connection.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace kelo::test {

/// Answers each call, unless it is "Refuse", and sends signals.
class Speaker final : public StandInService {
public:
    static constexpr const char* busName = "org.example.Speaker";
    static constexpr const char* objectPath = "/speaker";

    explicit Speaker(const SessionBus& bus) : StandInService(bus, busName) {
        serve(objectPath, "<node><interface name='org.example.Speaker'>"
                          "<method name='Ask'><arg type='s' direction='out'/></method>"
                          "<method name='Refuse'/></interface></node>");
    }

    void say(const char* text, const char* path = objectPath, const char* interface = busName,
             const char* signal = "Said") const {
        send(path, interface, signal, g_variant_new("(s)", text));
    }

private:
    GVariant* answer(const std::string& method, GVariant*) override {
        return method == "Ask" ? g_variant_new("(s)", "yes") : nullptr;
    }
};

/// A bus, a service on it, and a connection of ours.
class BusFixture : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(speaker.waitUntilOwned(peer)); }

    /// The speaker, by the unique name of its connection.
    bus::Object speakerAt(const std::string& path = Speaker::objectPath) const {
        return {g_dbus_connection_get_unique_name(peer.connection()), path, Speaker::busName};
    }
    /// Until the bus has handed on all that the connection has sent.
    static void settle(const bus::Connection& sender) {
        const GVariantPointer answer(g_dbus_connection_call_sync(
            sender.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping", nullptr,
            nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
        ASSERT_TRUE(answer);
    }

    ScopedMainLoop loop;
    TemporaryFolder folder;
    SessionBus peer{folder.path()};
    Speaker speaker{peer};
    bus::Connection connection = bus::openConnection(peer.address());
};

} // namespace kelo::test
