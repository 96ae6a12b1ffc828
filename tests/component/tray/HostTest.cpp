#include "component/tray/HostScreen.h"
#include "testing/rig/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

/// The program's item in real trays, clicked with the mouse.
namespace kelo::tests {
namespace {

namespace files = std::filesystem;
constexpr std::chrono::seconds deadline{20};

files::path home() {
    return std::getenv("HOME");
}

void write(const files::path& file, const std::string& text) {
    files::create_directories(file.parent_path());
    std::ofstream(file) << text;
}

struct Host {
    std::string name;
    std::vector<std::string> command;
    void (*configure)(bool dark);
    /// The button that opens the menu. Not every host opens it with the left button.
    unsigned menuButton;
};

void configureXfce(bool dark) {
    write(home() / "config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml",
          std::string(R"xml(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="dark-mode" type="bool" value=")xml") +
              (dark ? "true" : "false") + R"xml("/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=10;x=640;y=1009"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
)xml");
}

void configureLxqt(bool dark) {
    write(home() / "config/lxqt/lxqt.conf",
          std::string("[General]\ntheme=") + (dark ? "dark" : "light") + "\n");
    write(home() / "config/lxqt/panel.conf",
          "panels=panel1\n\n[panel1]\nplugins=statusnotifier\nposition=Bottom\ndesktop=0\n"
          "alignment=-1\nwidth=100\nwidth-percent=true\nlockPanel=true\n\n"
          "[statusnotifier]\ntype=statusnotifier\n");
}

const Host xfce{"xfce4-panel",
                {"/usr/bin/xfce4-panel", "--disable-wm-check", "--sm-client-disable"},
                configureXfce,
                1};
const Host lxqt{"lxqt-panel", {"/usr/bin/lxqt-panel"}, configureLxqt, 3};

double luminance(std::uint32_t color) {
    const auto linear = [color](int shift) {
        const double value = static_cast<double>((color >> shift) & 0xff) / 255;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(16) + 0.7152 * linear(8) + 0.0722 * linear(0);
}

class TrayHost : public testing::TestWithParam<Host> {
protected:
    void SetUp() override {
        if (access(GetParam().command.front().c_str(), X_OK) != 0)
            GTEST_SKIP() << GetParam().name << " is not installed";
    }

    /// The least contrast that accessibility guidelines ask of what is to be told from its ground.
    static constexpr double legible = 3;

    /// Keeps what was on the screen when a test failed.
    void TearDown() override {
        if (HasFailure())
            screen.save(picture("failure"));
        files::remove_all(home() / "data/icons");
    }

    std::unique_ptr<rig::ChildProcess> startHost(bool dark = false) {
        screen.pointer.moveTo({0, 0});
        screen.until("the place is free", [&] { return !isDrawn(panel()); });
        GetParam().configure(dark);
        std::vector<std::string> command = GetParam().command;
        if (hidesSvg)
            command = withoutSvg(command);
        auto host = std::make_unique<rig::ChildProcess>(
            command,
            std::map<std::string, std::string>{
                {"GDK_BACKEND", "x11"},
                {"GDK_PIXBUF_MODULE_FILE", hidesSvg ? "/dev/null" : ""},
                {"QT_QPA_PLATFORM", "xcb"},
                {"GTK_THEME", dark ? "Adwaita:dark" : "Adwaita"}},
            home() / "host.log");
        screen.until("the tray's panel is there", [&] { return isDrawn(panel()); });
        return host;
    }
    /// Where every tray looks; until the test ends.
    static void installIcons() {
        files::create_directories(home() / "data/icons");
        files::copy(KELO_ICONS, home() / "data/icons/hicolor", files::copy_options::recursive);
    }
    std::unique_ptr<rig::ChildProcess> startProgram() {
        files::remove(home() / "program.log");
        auto program = std::make_unique<rig::ChildProcess>(
            std::vector<std::string>{KELO_TRAY_PROGRAM, "--nothing"},
            std::map<std::string, std::string>{}, home() / "program.log");
        EXPECT_TRUE(program->awaitPrinted("started", deadline));
        return program;
    }
    Area awaitIcon(const screen::Picture& before) {
        screen.until("the icon is in the tray", [&] { return screen.changed(before).has_value(); });
        screen.still();
        const auto icon = screen.changed(before).value();
        EXPECT_LE(icon.width, 48);
        EXPECT_GE(icon.width, 12);
        return icon;
    }
    /// Waits until it can be told from its ground: the empty panel has a border there, too.
    void awaitIconBack(const Area& icon) {
        screen.until("the icon is back", [&] { return contrast(icon) >= legible; });
        screen.still();
    }
    void restart(std::unique_ptr<rig::ChildProcess>& host, bool dark) {
        host.reset();
        host = startHost(dark);
    }
    /// Where the configurations put it.
    Area panel() const {
        return {0, screen.connection.height() - 40, screen.connection.width(), 40};
    }
    bool isDrawn(const Area& area) const {
        return screen::Picture(screen.connection).isDrawn(area.x, area.y, area.width, area.height);
    }
    /// The contrast between the icon's strongest color and its background, as accessibility
    /// guidelines define it.
    double contrast(const Area& icon) const {
        const screen::Picture picture(screen.connection);
        const double ground = luminance(picture.color(icon.x, icon.y));
        double best = 1;
        for (int y = icon.y; y < icon.y + icon.height; ++y)
            for (int x = icon.x; x < icon.x + icon.width; ++x) {
                const double stroke = luminance(picture.color(x, y));
                best = std::max(best, (std::max(stroke, ground) + 0.05) /
                                          (std::min(stroke, ground) + 0.05));
            }
        return best;
    }
    void choose(const Area& icon, std::size_t line) {
        screen.pointer.click(icon.middle(), GetParam().menuButton);
        std::optional<Area> shown;
        try {
            shown = screen.menu();
        } catch (const std::runtime_error&) {
            screen.save(picture("failure"));
            throw;
        }
        const auto menu = *shown;
        if (line == 0) {
            screen.still();
            screen.save(menu, picture("menu"));
        }
        screen.pointer.click(screen.lines(menu).at(line).middle());
        screen.until("the menu is gone", [&] { return !screen.hasMenu(); });
    }
    files::path picture(const std::string& what) const {
        return files::path(KELO_TRAY_PICTURES) / (GetParam().name + "-" + what + ".png");
    }

    HostScreen screen;
    /// The host is started where nothing can draw SVG.
    bool hidesSvg = false;

    /// Qt finds its plugins in one place, which is empty for this command.
    static std::vector<std::string> withoutSvg(const std::vector<std::string>& command) {
        std::string script = "set -e\n";
        for (const char* kind : {"imageformats", "iconengines"})
            for (const char* version : {"qt5", "qt6"})
                script += std::string("for folder in /usr/lib/*/") + version + "/plugins/" + kind +
                          "; do [ ! -d \"$folder\" ] || mount -t tmpfs none \"$folder\"; done\n";
        std::vector<std::string> hidden{"/usr/bin/unshare", "--mount"};
        if (::geteuid() != 0)
            hidden.emplace_back("--map-root-user");
        for (const std::string& word :
             {std::string("sh"), std::string("-c"), script + "exec \"$@\"", std::string("sh")})
            hidden.push_back(word);
        hidden.insert(hidden.end(), command.begin(), command.end());
        return hidden;
    }
};

TEST_P(TrayHost, ShowsTheIconAndEachEntryDoesItsWork) {
    const auto host = startHost();
    const auto before = screen.still();
    const auto program = startProgram();
    const auto icon = awaitIcon(before);
    screen.save(icon, picture("light"));

    choose(icon, 0);
    EXPECT_TRUE(program->awaitPrinted("open\nappeared\n", deadline));
    screen.until("the main window is open", [&] { return screen.hasWindow("Kelo"); });
    screen.still();
    screen.save(picture("open"));
    choose(icon, 0);
    choose(icon, 1);
    EXPECT_TRUE(program->awaitPrinted("appeared\nopen\ncheck\n", deadline))
        << "an open window is not opened again: " << program->printed();
    screen.close("Kelo");
    choose(icon, 2);
    screen.until("the settings are open", [&] { return screen.hasWindow("Settings"); });
    screen.close("Settings");
    choose(icon, 3);
    EXPECT_TRUE(program->awaitPrinted("quit\n", deadline));
    EXPECT_EQ(program->awaitExit(deadline), 0);
    EXPECT_TRUE(host->isRunning());
}

TEST_P(TrayHost, LeftClickOpensTheMenuOrTheWindow) {
    const auto host = startHost();
    const auto before = screen.still();
    const auto program = startProgram();
    const auto icon = awaitIcon(before);
    screen.pointer.click(icon.middle());
    if (GetParam().menuButton == 1) {
        screen.pointer.click(screen.lines(screen.menu()).at(0).middle());
        EXPECT_TRUE(program->awaitPrinted("open\n", deadline));
    }
    EXPECT_TRUE(program->awaitPrinted("appeared\n", deadline));
}

TEST_P(TrayHost, HasTheItemBackAfterARestart) {
    auto host = startHost();
    const auto before = screen.still();
    const auto program = startProgram();
    const auto icon = awaitIcon(before);
    restart(host, true);
    awaitIconBack(icon);
    screen.save(icon, picture("dark"));
    choose(icon, 3);
    EXPECT_EQ(program->awaitExit(deadline), 0);
}

TEST_P(TrayHost, ShowsTheIconOfTheThemeOnLightAndDark) {
    installIcons();
    auto host = startHost();
    const auto before = screen.still();
    const auto program = startProgram();
    const auto icon = awaitIcon(before);
    EXPECT_GE(contrast(icon), legible);
    screen.save(icon, picture("theme-light"));
    restart(host, true);
    awaitIconBack(icon);
    screen.save(icon, picture("theme-dark"));
    program->end();
}

TEST_P(TrayHost, ShowsTheIconWhereNothingDrawsSvg) {
    hidesSvg = true;
    rig::ChildProcess attempt(withoutSvg({"/bin/true"}), {}, home() / "attempt.log");
    if (attempt.awaitExit(deadline) != 0)
        GTEST_SKIP() << "Nothing can be hidden here: " << attempt.printed();
    installIcons();
    auto host = startHost();
    const auto before = screen.still();
    const auto program = startProgram();
    const auto icon = awaitIcon(before);
    EXPECT_GE(contrast(icon), legible);
    screen.save(icon, picture("without-svg"));
    program->end();
}

INSTANTIATE_TEST_SUITE_P(Hosts, TrayHost, testing::Values(xfce, lxqt),
                         [](const auto& tested) { return tested.param.name.substr(0, 4); });

class ProgramWithoutTray : public testing::Test {
protected:
    std::unique_ptr<rig::ChildProcess> start(const std::vector<std::string>& arguments) {
        std::vector<std::string> command{KELO_TRAY_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return std::make_unique<rig::ChildProcess>(command, std::map<std::string, std::string>{},
                                                   log(arguments));
    }
    static files::path log(const std::vector<std::string>& arguments) {
        return home() / ((arguments.empty() ? "plain" : arguments.front()) + ".log");
    }
    HostScreen screen;

    ~ProgramWithoutTray() override {
        for (const auto& file : files::directory_iterator(home()))
            if (file.path().extension() == ".log")
                files::remove(file);
    }
};

TEST_F(ProgramWithoutTray, IsReachedByStartingItAgain) {
    const auto program = start({"--nothing"});
    ASSERT_TRUE(program->awaitPrinted("started\n", deadline));
    EXPECT_EQ(start({})->awaitExit(deadline), 0);
    EXPECT_TRUE(program->awaitPrinted("appeared\n", deadline));
    screen.until("the window is open", [&] { return screen.hasWindow("Kelo"); });
    screen.close("Kelo");
    EXPECT_EQ(start({"--open"})->awaitExit(deadline), 0);
    EXPECT_TRUE(program->awaitPrinted("appeared again\n", deadline));
    EXPECT_EQ(start({"--settings"})->awaitExit(deadline), 0);
    screen.until("the settings are open", [&] { return screen.hasWindow("Settings"); });
    EXPECT_EQ(start({"--quit"})->awaitExit(deadline), 0);
    EXPECT_EQ(program->awaitExit(deadline), 0);
}

TEST_F(ProgramWithoutTray, IsNotStartedToBeEnded) {
    EXPECT_EQ(start({"--quit"})->awaitExit(deadline), 0);
    const auto both = start({"--settings", "--quit"});
    EXPECT_EQ(both->awaitExit(deadline), 0);
    EXPECT_EQ(both->printed(), "");
}

TEST_F(ProgramWithoutTray, StartsWithTheSettingsWhenAskedForThem) {
    const auto program = start({"--settings"});
    screen.until("the settings are open", [&] { return screen.hasWindow("Settings"); });
    EXPECT_FALSE(screen.hasWindow("Kelo"));
    EXPECT_EQ(start({"--settings"})->awaitExit(deadline), 0);
    EXPECT_EQ(start({"--quit"})->awaitExit(deadline), 0);
    EXPECT_EQ(program->awaitExit(deadline), 0);
}

TEST_F(ProgramWithoutTray, AnswersTheClickOnQuitBeforeItEnds) {
    const auto program = start({"--nothing"});
    ASSERT_TRUE(program->awaitPrinted("started\n", deadline));
    // It comes a moment after the program has started.
    screen.until("the menu is on the bus", [] {
        rig::ChildProcess look({"/usr/bin/gdbus", "introspect", "--session", "--dest",
                                "app.kelo.Kelo", "--object-path", "/StatusNotifierItem/Menu"},
                               {}, home() / "look.log");
        return look.awaitExit(deadline) == 0 &&
               look.printed().find("com.canonical.dbusmenu") != std::string::npos;
    });
    rig::ChildProcess click({"/usr/bin/gdbus", "call", "--session", "--dest", "app.kelo.Kelo",
                             "--object-path", "/StatusNotifierItem/Menu", "--method",
                             "com.canonical.dbusmenu.Event", "6", "clicked", "<0>", "0"},
                            {}, home() / "click.log");
    EXPECT_EQ(click.awaitExit(deadline), 0) << click.printed();
    EXPECT_EQ(click.printed(), "()\n");
    EXPECT_EQ(program->awaitExit(deadline), 0);
}

} // namespace
} // namespace kelo::tests
