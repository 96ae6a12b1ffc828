#include "e2e/VoiceProgramFixture.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <thread>
#include <utility>

namespace kelo::e2e {

namespace {

constexpr const char* logFile = "/tmp/kelo-debug.log";
constexpr const char* control = "Control_L";
constexpr const char* option = "Alt_L";

constexpr std::chrono::milliseconds holdLength{400};

constexpr int panelWidth = 640;
constexpr int panelHeight = 620;
constexpr int aboveEdge = 16;

} // namespace

VoiceProgramFixture::VoiceProgramFixture() {
    std::error_code missing;
    const auto size = std::filesystem::file_size(logFile, missing);
    logBegin = missing ? 0 : size;
}

void VoiceProgramFixture::SetUp() {
    startService();
    startKelo();
    awaitThat("the hotkey is armed",
              [&] { return debugLog().find("VoiceController.start") != std::string::npos; });
    // A window manager may show a new window first, and bring it to the front a moment later.
    awaitThat("Kelo's window is on the screen and in use", [&] {
        const auto active = desktop().screen.windows.active();
        return active && active->process == kelo->identifier();
    });
}

void VoiceProgramFixture::TearDown() {
    // A key that a failed test left down would be held in the next one.
    releaseChord();
    ProgramFixture::TearDown();
    pages.reset();
}

void VoiceProgramFixture::pressChord() const {
    desktop().screen.keyboard.down(control);
    desktop().screen.keyboard.down(option);
}

void VoiceProgramFixture::releaseChord() const {
    desktop().screen.keyboard.up(option);
    desktop().screen.keyboard.up(control);
}

void VoiceProgramFixture::tapChord() const {
    // All in one request: between two, a busy machine may let pass so much time that it is a hold.
    desktop().screen.keyboard.tap({screen::keySymbol(control), screen::keySymbol(option)});
}

void VoiceProgramFixture::holdChord(const std::string& other) const {
    const screen::Keyboard& keyboard = desktop().screen.keyboard;
    pressChord();
    if (!other.empty())
        keyboard.down(other);
    std::this_thread::sleep_for(holdLength);
    if (!other.empty())
        keyboard.up(other);
    releaseChord();
}

rig::ScreenWindow VoiceProgramFixture::tapToShow() {
    tapChord();
    return awaitPanel();
}

void VoiceProgramFixture::tapToHide() {
    tapChord();
    awaitNoPanel();
}

rig::ScreenWindow VoiceProgramFixture::awaitPanel() {
    return panel.awaitShown(kelo->identifier());
}

void VoiceProgramFixture::awaitNoPanel() {
    panel.awaitHidden(kelo->identifier());
}

void VoiceProgramFixture::awaitPlace(const rig::ScreenWindow& shown, const rig::Area& place) const {
    const auto now = [&] {
        return panel.contents(desktop().screen.windows.describe(shown.identifier));
    };
    awaitThat("the panel is where it belongs", [&] { return now() == place; });
}

void VoiceProgramFixture::awaitWidgetPage(const rig::ScreenWindow& shown) const {
    const rig::Wanted lowest = rig::pageButton("Start microphone");
    awaitThat("the widget's page is ready", [&] {
        const auto found = desktop().tree.find(lowest);
        return found && found->isSensitive();
    });
    user.awaitDrawn(lowest, shown.identifier);
}

void VoiceProgramFixture::awaitKeyboard(const rig::ScreenWindow& shown) const {
    awaitThat("the panel has the keyboard", [&] { return panel.hasKeyboard(shown); });
}

void VoiceProgramFixture::clickInPanel(const rig::ScreenWindow& shown,
                                       const rig::Wanted& wanted) const {
    user.click(wanted, shown.identifier);
}

rig::Area VoiceProgramFixture::placeOn(const rig::Area& monitor) {
    return {{monitor.corner.x + (monitor.width - panelWidth) / 2,
             monitor.corner.y + monitor.height - aboveEdge - panelHeight},
            panelWidth,
            panelHeight};
}

rig::Area VoiceProgramFixture::wholeScreen() const {
    const auto& connection = desktop().screen.connection;
    return {{0, 0}, connection.width(), connection.height()};
}

std::optional<rig::ScreenWindow> VoiceProgramFixture::mainWindow() const {
    const auto windows = desktop().screen.windows.managed();
    const auto found = std::ranges::find(windows, kelo->identifier(), &rig::ScreenWindow::process);
    return found == windows.end() ? std::nullopt : std::optional(*found);
}

void VoiceProgramFixture::goTo(screen::OtherProgram& other) const {
    const auto& windows = desktop().screen.windows;
    const auto isOther = [&](const rig::ScreenWindow& each) {
        return each.identifier == other.window();
    };
    awaitThat("the other program's window is on the screen", [&] {
        return windows.describe(other.window()).isMapped &&
               std::ranges::any_of(windows.managed(), isOther);
    });
    // Once: a request that the window manager has not dealt with yet would take the keyboard from
    // the panel later.
    windows.tellManager(other.window(), "_NET_ACTIVE_WINDOW");
    awaitThat("the other program has the keyboard, and the window manager knows", [&] {
        const auto active = windows.active();
        return other.hasKeyboard() && active && isOther(*active);
    });
}

void VoiceProgramFixture::awaitReceived(screen::OtherProgram& other,
                                        const std::string& text) const {
    awaitThat("the other program has got \"" + text + "\"",
              [&] { return other.received() == text; });
}

rig::StandInService& VoiceProgramFixture::standIn(std::map<std::string, std::string> served) {
    service.reset();
    pages.reset();
    pages = std::make_unique<rig::StandInService>(authority, std::move(served));
    return *pages;
}

void VoiceProgramFixture::awaitAsked(const rig::StandInService& standIn,
                                     const std::string& target) const {
    awaitThat("the page has asked for " + target, [&] { return standIn.wasAsked(target); });
}

std::string VoiceProgramFixture::debugLog() const {
    std::ifstream log(logFile);
    log.seekg(static_cast<std::streamoff>(logBegin));
    return {std::istreambuf_iterator<char>(log), {}};
}

std::vector<pid_t> VoiceProgramFixture::webProcesses() const {
    auto all = rig::processTree(kelo->identifier());
    std::erase_if(all, [](pid_t process) {
        return rig::programName(process) != std::string("WebKitWebProcess").substr(0, 15);
    });
    return all;
}

void VoiceProgramFixture::awaitThat(const std::string& what,
                                    const std::function<bool()>& condition) const {
    desktop().tree.awaitThat(what, condition);
}

} // namespace kelo::e2e
