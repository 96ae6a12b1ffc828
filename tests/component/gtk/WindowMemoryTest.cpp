#include "linux/gtk/main/WindowMemory.h"

#include "component/gtk/RunningProgram.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "testing/TemporaryFolder.h"

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <sys/stat.h>

// After the others, because X11 defines macros with names that they use.
#include <gdk/x11/gdkx.h>

namespace kelo::tests {
namespace {

/// One start of the program after the other, with one file to remember things in.
class WindowMemory : public testing::Test {
protected:
    /// Starts the program, runs the body with the main window on the screen, and ends the program.
    void start(const std::function<void(RunningProgram&, Gtk::Window&)>& body) {
        gtk::HostSettings settings;
        settings.stateFile = file.string();
        RunningProgram program(settings);
        program.run([&] { body(program, program.window("Kelo")); });
    }
    /// With the frame that the toolkit draws.
    static std::pair<int, int> sizeOf(Gtk::Window& window) {
        return {window.get_surface()->get_width(), window.get_surface()->get_height()};
    }
    static void resize(RunningProgram& program, Gtk::Window& window, int width, int height) {
        window.set_default_size(width, height);
        RunningProgram::until("the window has its new size",
                              [&] { return sizeOf(window) == std::pair(width, height); });
        program.untilDrawn(window);
    }
    static void move(RunningProgram& program, Gtk::Window& window, int x, int y) {
        GdkSurface* const surface = window.get_surface()->gobj();
        XMoveWindow(gdk_x11_display_get_xdisplay(gdk_display_get_default()),
                    gdk_x11_surface_get_xid(surface), x, y);
        untilAt(program, window, x, y);
    }
    static void untilAt(RunningProgram& program, Gtk::Window& window, int x, int y) {
        RunningProgram::until("the window is at its place", [&] {
            return program.screen.origin(window.get_surface()->gobj()) == std::pair(x, y);
        });
    }
    static void untilMaximized(Gtk::Window& window, bool isMaximized) {
        RunningProgram::until("the window is as large as it should be",
                              [&] { return window.is_maximized() == isMaximized; });
    }
    void write(const std::string& text) const {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << text;
    }
    std::string written() const {
        std::ostringstream text;
        text << std::ifstream(file).rdbuf();
        return text.str();
    }

    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder / "kelo" / "windows";
};

TEST_F(WindowMemory, SizeAndPlaceAreThoseOfTheClosedWindow) {
    start([](RunningProgram& program, Gtk::Window& window) {
        resize(program, window, 900, 700);
        move(program, window, 120, 90);
        window.close();
        RunningProgram::settle();
        program.host.openWindow("main");
        untilAt(program, program.window("Kelo"), 120, 90);
        program.untilActive(program.window("Kelo"));
        EXPECT_EQ(sizeOf(program.window("Kelo")), std::pair(900, 700));
    });
}

TEST_F(WindowMemory, SizeAndPlaceAreThoseAtTheEndOfTheProgram) {
    start([](RunningProgram& program, Gtk::Window& window) {
        resize(program, window, 900, 700);
        move(program, window, 120, 90);
    });
    start([](RunningProgram& program, Gtk::Window& window) {
        untilAt(program, window, 120, 90);
        EXPECT_EQ(sizeOf(window), std::pair(900, 700));
    });
}

TEST_F(WindowMemory, MaximizedStateComesBackAndTheSizeBeforeItAfterwards) {
    start([](RunningProgram& program, Gtk::Window& window) {
        resize(program, window, 900, 700);
        window.maximize();
        untilMaximized(window, true);
        program.untilDrawn(window);
    });
    start([](RunningProgram& program, Gtk::Window& window) {
        untilMaximized(window, true);
        window.unmaximize();
        untilMaximized(window, false);
        RunningProgram::until("the window has its former size",
                              [&] { return sizeOf(window) == std::pair(900, 700); });
        program.untilDrawn(window);
    });
    start([](RunningProgram&, Gtk::Window& window) { EXPECT_FALSE(window.is_maximized()); });
}

TEST_F(WindowMemory, PlaceThatNoMonitorShowsIsCorrected) {
    write("[main window]\nwidth=900\nheight=700\nx=5000\ny=-3000\n");
    start([](RunningProgram& program, Gtk::Window& window) {
        untilAt(program, window, program.screen.width() - 900, 0);
    });
}

TEST_F(WindowMemory, SizeIsNeitherBeyondTheScreenNorBelowTheMinimum) {
    write("[main window]\nwidth=90000\nheight=10\n");
    start([](RunningProgram& program, Gtk::Window& window) {
        EXPECT_EQ(sizeOf(window).first, program.screen.width());
        EXPECT_EQ(program.app.page->area.get_height(), 600);
    });
}

TEST_F(WindowMemory, FileThatMakesNoSenseIsAsGoodAsNone) {
    for (const char* text :
         {"nonsense", "[main window]\nwidth=wide\nheight=-3\nx=2147483647\ny=0\n",
          "[main window]\nwidth=0\nheight=0\n"}) {
        write(text);
        start([](RunningProgram& program, Gtk::Window&) {
            EXPECT_EQ(program.app.page->area.get_width(), 1100);
            EXPECT_EQ(program.app.page->area.get_height(), 760);
        });
    }
}

TEST_F(WindowMemory, NothingIsWrittenWhileADialogIsOpen) {
    class Dialog final : public gtk::ModalWindow {
    public:
        explicit Dialog(Gtk::Window& parent) : ModalWindow(&parent) {}

    private:
        void dismissed() override {}
    };
    start([this](RunningProgram& program, Gtk::Window& window) {
        Dialog dialog(window);
        dialog.present();
        program.untilActive(dialog);
        EXPECT_EQ(written(), "");
        program.host.terminate();
        EXPECT_EQ(written(), "");
    });
}

TEST_F(WindowMemory, WindowThatLosesTheKeyboardIsRemembered) {
    start([this](RunningProgram& program, Gtk::Window& window) {
        resize(program, window, 900, 700);
        program.host.openSettings();
        program.untilActive(program.window("Settings"));
        EXPECT_NE(written().find("width=900"), std::string::npos) << written();
    });
}

TEST_F(WindowMemory, FileIsTheUsersAlone) {
    start([](RunningProgram&, Gtk::Window&) {});
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    ASSERT_EQ(stat(file.parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

const std::vector<Gdk::Rectangle> twoMonitors{{0, 0, 1920, 1080}, {1920, 200, 1280, 800}};

void expectPlace(Gdk::Rectangle window, int x, int y) {
    const auto place = gtk::reachable(window, twoMonitors);
    EXPECT_EQ(place.get_x(), x);
    EXPECT_EQ(place.get_y(), y);
}

TEST(ReachablePlace, IsTheWindowsOwnWhereItsUpperEdgeIsInSight) {
    expectPlace({100, 50, 900, 700}, 100, 50);
    expectPlace({1500, 300, 900, 700}, 1500, 300); // on both monitors
    expectPlace({-700, 50, 900, 700}, -700, 50);   // partly beyond the edge
    expectPlace({-14, -14, 900, 700}, -14, -14);   // with its shadow beyond
}

TEST(ReachablePlace, IsInsideTheNearestMonitorOtherwise) {
    expectPlace({-850, 50, 900, 700}, 0, 50);
    expectPlace({100, -300, 900, 700}, 100, 0);
    expectPlace({100, 1070, 900, 700}, 100, 380);
    expectPlace({3190, 900, 900, 700}, 2300, 300);
    expectPlace({2000, 5000, 9000, 9000}, 1920, 200);
}

TEST(ReachablePlace, IsUnchangedWithoutAMonitor) {
    EXPECT_EQ(gtk::reachable({5, 6, 7, 8}, {}).get_x(), 5);
}

TEST_F(WindowMemory, PageIsAsLargeAsItWas) {
    start([](RunningProgram& program, Gtk::Window&) {
        RunningProgram::until("the page has the keyboard",
                              [&] { return program.app.page->area.has_focus(); });
        program.screen.press(GDK_KEY_equal, {GDK_KEY_Control_L});
        program.screen.press(GDK_KEY_equal, {GDK_KEY_Control_L});
        RunningProgram::until("it is larger",
                              [&] { return program.app.page->pageControls.factor == 1.25; });
    });
    start([](RunningProgram& program, Gtk::Window&) {
        EXPECT_DOUBLE_EQ(program.app.page->pageControls.factor, 1.25);
    });
    write("[page]\nzoom=100000\n");
    start([](RunningProgram& program, Gtk::Window&) {
        EXPECT_DOUBLE_EQ(program.app.page->pageControls.factor, 3);
    });
}

} // namespace
} // namespace kelo::tests
