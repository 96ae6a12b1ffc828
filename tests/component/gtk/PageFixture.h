#pragma once

#include "component/gtk/RunningProgram.h"

#include <gtest/gtest.h>

namespace kelo::tests {

/// The main window with its page.
class PageFixture : public testing::Test {
protected:
    Gtk::Window& main() { return program.window("Kelo"); }
    FakePage& page() { return *program.app.page; }
    /// The bar about the page; null if none is shown.
    Gtk::Widget* bar() { return withClass(main(), "kelo-notice"); }
    void pressButton(const char* name) {
        auto* const button = buttonNamed(main(), name);
        ASSERT_TRUE(button) << name;
        program.click(*button);
    }
    void untilPageHasKeyboard() {
        RunningProgram::until("the page has the keyboard", [&] { return page().area.has_focus(); });
    }

    RunningProgram program;
};

} // namespace kelo::tests
