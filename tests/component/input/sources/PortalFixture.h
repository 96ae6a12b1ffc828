#pragma once

#include "component/ScopedMainLoop.h"
#include "component/passkey/SessionBus.h"
#include "linux/bus/Signal.h"
#include "linux/input/portal/PortalModifierSource.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace kelo {

inline constexpr const char* portalName = "org.freedesktop.portal.Desktop";
inline constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
/// What the portal is asked, once it has a session.
inline constexpr const char* bound =
    "BindShortcuts own session: widget, Voice widget, CTRL+ALT+space";

/// A source of the hotkey with a portal that is made by dbusmock, on a bus of its own.
class PortalSource : public testing::Test {
protected:
    /// parameters: JSON, as the portal's file explains them.
    void startPortal(const std::string& parameters = "{}") {
        portal = Child({"/usr/bin/python3", "-m", "dbusmock", "--session", "--template",
                        KELO_DESKTOP_PORTAL, "--parameters", parameters},
                       {"DBUS_SESSION_BUS_ADDRESS=" + bus.address()});
        ASSERT_TRUE(bus.waitForName(portalName));
    }
    void stopPortal() {
        portal.kill();
        ASSERT_TRUE(bus.waitForNoName(portalName));
    }
    GVariantPointer command(const char* method, GVariant* parameters = nullptr) const {
        GError* error = nullptr;
        GVariantPointer answer(g_dbus_connection_call_sync(
            bus.connection(), portalName, portalPath, "org.freedesktop.DBus.Mock", method,
            parameters, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, &error));
        if (const gobject::GErrorPointer failure(error); failure)
            ADD_FAILURE() << method << ": " << failure->message;
        return answer;
    }
    void press(const char* shortcut = "widget") const {
        command("Press", g_variant_new("(s)", shortcut));
    }
    void release() const { command("Release", g_variant_new("(s)", "widget")); }
    std::vector<std::string> asked() const {
        const auto answer = command("Asked");
        std::vector<std::string> lines;
        if (!answer)
            return lines;
        const GVariantPointer array(g_variant_get_child_value(answer.get(), 0));
        for (gsize i = 0; i < g_variant_n_children(array.get()); ++i) {
            const GVariantPointer line(g_variant_get_child_value(array.get(), i));
            lines.emplace_back(g_variant_get_string(line.get(), nullptr));
        }
        return lines;
    }
    bool waitUntilAsked(std::size_t count) const {
        // Its only purpose is to wake the loop up.
        const bus::Signal more(bus::Connection::share(bus.connection()),
                               {portalName, "", "org.freedesktop.DBus.Mock"}, "WasAsked",
                               [](const std::string&, GVariant*) {});
        return ScopedMainLoop::runUntil([&] { return asked().size() >= count; });
    }
    bool start() {
        return source->start([this](platform::ModifierFlags flags) { heard.push_back(flags); });
    }
    bool waitFor(std::size_t count) const {
        return ScopedMainLoop::runUntil([&] { return heard.size() >= count; });
    }

    ScopedMainLoop loop;
    test::TemporaryFolder folder;
    SessionBus bus{folder.path()};
    Child portal;
    std::unique_ptr<input::PortalModifierSource> source =
        std::make_unique<input::PortalModifierSource>(bus.address());
    std::vector<platform::ModifierFlags> heard;
};

} // namespace kelo
