// Before Xlib, whose macros it would trip over.
#include <gtest/gtest.h>

#include "linux/input/xkb/XServer.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <memory>

namespace kelo::tests {

using input::XServer;

TEST(XServer, WithTheExtensionIsThatOfAWaylandDesktop) {
    EXPECT_TRUE((XServer{{"RANDR", "XWAYLAND"}, {}}).isXwayland());
    EXPECT_TRUE((XServer{{"XWAYLAND"}, {"HDMI-A-1"}}).isXwayland());
}

TEST(XServer, WithMonitorsOfThatNameIsThatOfAWaylandDesktop) {
    EXPECT_TRUE((XServer{{"RANDR"}, {"XWAYLAND0"}}).isXwayland());
    EXPECT_TRUE((XServer{{}, {"other", "XWAYLAND1"}}).isXwayland());
}

TEST(XServer, WithNeitherIsAnOrdinaryOne) {
    EXPECT_FALSE((XServer{{}, {}}).isXwayland());
    EXPECT_FALSE(
        (XServer{{"RANDR", "XKEYBOARD", "XWAYLANDISH"}, {"HDMI-1", "eDP-1"}}).isXwayland());
    EXPECT_FALSE((XServer{{"RANDR"}, {"NOT-XWAYLAND0"}}).isXwayland());
}

TEST(XServer, TellsItsExtensionsAndMonitors) {
    const std::unique_ptr<Display, decltype(&XCloseDisplay)> connection(XOpenDisplay(nullptr),
                                                                        XCloseDisplay);
    ASSERT_TRUE(connection);
    const XServer server = XServer::of(connection.get());
    EXPECT_NE(std::ranges::find(server.extensions, "XTEST"), server.extensions.end());
    EXPECT_FALSE(server.monitors.empty());
}

} // namespace kelo::tests
