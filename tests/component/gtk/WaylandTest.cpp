// What a Wayland compositor is told. It needs a compositor, and WAYLAND_DEBUG=client.
#include "component/gtk/DesktopAnswers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace kelo::tests {
namespace {

using testing::HasSubstr;

class WaylandWindow : public testing::Test {
protected:
    /// Runs the body while the main window is open. The result is the conversation with the
    /// compositor.
    std::string conversationIn(const std::function<void()>& body) {
        testing::internal::CaptureStderr();
        mainLoop.post([&] {
            try {
                RunningProgram::until("the main window has appeared",
                                      [this] { return app.count("appear") > 0; });
                body();
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
            }
            host.terminate();
        });
        EXPECT_EQ(host.run(app), 0);
        return testing::internal::GetCapturedStderr();
    }

    DesktopOnBus desktop{/*hasTray=*/true};
    gobject::GLibMainLoop mainLoop;
    MainLoop::Installation installation{mainLoop};
    FakeApp app;
    gtk::GtkApplicationHost host{{"kelo"}, {}, {}};
};

TEST_F(WaylandWindow, IsActivatedWithTheTokenOfAClickOnANotification) {
    int clicks = 0;
    const auto said = conversationIn([&] {
        host.pageNotifications()->show("one", {"A title", ""}, [&] { ++clicks; });
        RunningProgram::until("it is shown", [&] { return !desktop.shown.empty(); });
        awaitAnswers(desktop);
        desktop.press("default", "click-token");
        RunningProgram::until("the page was told", [&] { return clicks == 1; });
    });
    EXPECT_THAT(said, HasSubstr(".activate(\"click-token\", wl_surface"));
}

TEST_F(WaylandWindow, IsActivatedWithTheTokenThatComesWithAnAction) {
    int clicks = 0;
    const auto said = conversationIn([&] {
        host.pageNotifications()->show("one", {"A title", ""}, [&] { ++clicks; });
        desktop.activateAction("app.kelo.Kelo", "/app/kelo/Kelo", "page-notification", {"one"},
                               "portal-token");
        RunningProgram::until("the page was told", [&] { return clicks == 1; });
        awaitAnswers(desktop);
    });
    EXPECT_THAT(said, HasSubstr(".activate(\"portal-token\", wl_surface"));
}

TEST_F(WaylandWindow, IsActivatedWithTheTokenThatComesWithAStartByName) {
    const auto said = conversationIn([&] {
        bool isAnswered = false;
        desktop.activate("app.kelo.Kelo", "/app/kelo/Kelo", "start-token",
                         [&] { isAnswered = true; });
        RunningProgram::until("the program has answered", [&] { return isAnswered; });
        RunningProgram::settle();
    });
    EXPECT_THAT(said, HasSubstr(".activate(\"start-token\", wl_surface"));
}

} // namespace
} // namespace kelo::tests
