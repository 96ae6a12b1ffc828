#pragma once

#include "component/gtk/RunningProgram.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace kelo::tests {

/// The main window with its panel over a page of one colour.
class OverlayFixture : public testing::Test {
protected:
    static constexpr Color pageColor{255, 0, 255};

    void whileOnLogin(const std::function<void()>& body) {
        program.run([&] {
            program.app.state->onLogin = true;
            draw();
            awaitRest();
            body();
        });
    }
    void draw() {
        RunningProgram::settle();
        program.untilDrawn(main());
    }
    /// Until the panel stays where it is: the window manager may still move the window.
    void awaitRest() {
        RunningProgram::until("the panel has come to rest", [&] {
            const auto before = program.boxOf(*panel());
            program.untilDrawn(main());
            return program.boxOf(*panel()) == before;
        });
    }
    /// Draws the description of the test.
    void drawAs(std::function<void(platform::OverlayDescription&)> adjust) {
        program.app.adjustOverlay = std::move(adjust);
        program.app.state->objectWillChange();
        draw();
    }
    Gtk::Window& main() { return program.window("Kelo"); }
    Gtk::Widget* panel() { return withClass(main(), "kelo-overlay"); }
    Gtk::Button* signIn() { return buttonNamed(main(), "Sign in with passkey"); }

    RunningProgram program;
};

} // namespace kelo::tests
