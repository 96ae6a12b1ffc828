#include "linux/gtk/application/ReplacementNotice.h"

#include "component/gtk/DesktopAnswers.h"
#include "component/gtk/RunningProgram.h"
#include "testing/TemporaryFolder.h"

#include <giomm/file.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace kelo::tests {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

const std::vector<std::string> told{"Kelo has been updated"};

Task<bool> answer(bool mayEnd) {
    co_return mayEnd;
}

/// The program's file, as a package manager treats it.
class ReplacedProgram : public testing::Test {
protected:
    ReplacedProgram() { write(path); }

    static void write(const fs::path& file) { std::ofstream(file) << "a program"; }
    void replace() const {
        const fs::path next = path.string() + ".dpkg-new";
        write(next);
        fs::rename(next, path);
    }
    /// Runs the body beside a running program that watches the file.
    void watching(std::chrono::milliseconds calm, const std::function<void()>& body) {
        gtk::HostSettings settings;
        settings.relaunch = [this] { ++relaunches; };
        settings.beforeQuit = {[this]() -> Task<bool> {
            ++questions;
            return answer(mayEnd);
        }};
        RunningProgram program(settings);
        program.run([&] {
            const auto application =
                std::dynamic_pointer_cast<Gio::Application>(Gio::Application::get_default());
            ASSERT_TRUE(application);
            const gtk::ReplacementNotice notice(*application, path, calm);
            body();
        });
    }
    /// Makes the change, and waits until every watcher has heard of it and what it asked for is
    /// done.
    void changing(const std::function<void()>& change) {
        bool isHeard = false;
        const auto monitor = Gio::File::create_for_path(path.string())
                                 ->monitor_file(Gio::FileMonitorFlags::WATCH_MOVES);
        monitor->signal_changed().connect([&](const auto&...) { isHeard = true; });
        change();
        RunningProgram::until("the change is heard of", [&] { return isHeard; });
        monitor->cancel();
        RunningProgram::settle();
        awaitAnswers(desktop);
    }
    void awaitNotice() {
        RunningProgram::until("the user is told", [&] { return !desktop.shown.empty(); });
        awaitAnswers(desktop);
    }

    DesktopOnBus desktop{/*hasTray=*/true};
    const test::TemporaryFolder folder;
    const fs::path path = folder.path() / "kelo";
    int relaunches = 0;
    int questions = 0;
    bool mayEnd = true;
};

TEST_F(ReplacedProgram, IsToldOfOnceForEachVersion) {
    watching(0ms, [&] {
        changing([&] { replace(); });
        awaitNotice();
        EXPECT_EQ(desktop.shown, told);
        changing([&] { fs::permissions(path, fs::perms::owner_all); });
        EXPECT_EQ(desktop.shown, told);
        changing([&] { replace(); });
        RunningProgram::until("the user is told again", [&] { return desktop.shown.size() == 2; });
        awaitAnswers(desktop);
    });
    EXPECT_EQ(relaunches, 0);
}

TEST_F(ReplacedProgram, IsNoLongerToldOfWhenItEnds) {
    watching(0ms, [&] {
        changing([&] { replace(); });
        awaitNotice();
        EXPECT_EQ(desktop.closed, 0);
    });
    RunningProgram::until("the notice is gone", [&] { return desktop.closed == 1; });
}

TEST_F(ReplacedProgram, IsNotToldOfBeforeTheFilesHaveComeToRest) {
    watching(1h, [&] {
        changing([&] { replace(); });
        EXPECT_TRUE(desktop.shown.empty());
    });
}

TEST_F(ReplacedProgram, IsNotToldOfWhenItIsRemoved) {
    watching(0ms, [&] {
        changing([&] { fs::remove(path); });
        EXPECT_TRUE(desktop.shown.empty());
    });
}

class RestartedProgram : public ReplacedProgram {};

TEST_F(RestartedProgram, StartsAgainWhenItHasEnded) {
    watching(0ms, [&] {
        replace();
        awaitNotice();
        EXPECT_EQ(relaunches, 0);
        ASSERT_EQ(desktop.buttons.size(), 4U);
        EXPECT_EQ(desktop.buttons[3], "Restart");
        desktop.press(desktop.buttons[2]);
        RunningProgram::until("the program ends", [&] { return relaunches == 1; });
    });
    EXPECT_EQ(relaunches, 1);
}

TEST_F(RestartedProgram, DoesNotStartAgainAtALaterEndIfItWasToStay) {
    watching(0ms, [&] {
        replace();
        awaitNotice();
        mayEnd = false;
        desktop.press(desktop.buttons.at(2));
        awaitAnswers(desktop);
        EXPECT_EQ(questions, 1);
        mayEnd = true;
    });
    EXPECT_EQ(relaunches, 0);
}

} // namespace
} // namespace kelo::tests
