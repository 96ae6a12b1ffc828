#include "app/UpdaterController.h"

#include "app/KeloApp.h"
#include "app/MenuBarContent.h"
#include "fakes/ScopedTestDesktop.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelo {
namespace {

TEST(UpdaterController, IsMadeAtTheFirstCheckAndNeverAgain) {
    fakes::ScopedTestDesktop desktop;
    const auto updaters = [&] {
        return std::count(desktop.made.begin(), desktop.made.end(), "updater");
    };
    app::KeloApp app;
    desktop.application().run(app);
    const auto menu = app::MenuBarContent().body();
    EXPECT_EQ(updaters(), 0) << "nothing touches it at the start";

    const auto& check = std::get<platform::MenuItem>(menu.at(2)).action;
    check();
    EXPECT_EQ(updaters(), 1);
    EXPECT_EQ(desktop.updateChecks, 1);
    check();
    EXPECT_EQ(updaters(), 1);
    EXPECT_EQ(desktop.updateChecks, 2);
    const auto action = app.actions().at(1);
    EXPECT_EQ(action.name, "check-for-updates");
    action.action();
    EXPECT_EQ(updaters(), 1) << "the desktop's list of actions reaches the same updater";
    EXPECT_EQ(desktop.updateChecks, 3);
    EXPECT_EQ(&app::UpdaterController::shared(), &app::UpdaterController::shared());
}

} // namespace
} // namespace kelo
