#pragma once

#include "e2e/ProgramFixture.h"
#include "testing/rig/ProcessTree.h"
#include "testing/rig/StandInService.h"
#include "testing/rig/VoicePanel.h"
#include "testing/screen/OtherProgram.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelo::e2e {

/// A program driven by the chord, and the panel that the chord shows. Begins with Kelo's window on
/// the screen, wherever its page is, and the hotkey armed.
class VoiceProgramFixture : public ProgramFixture {
protected:
    VoiceProgramFixture();

    void SetUp() override;
    void TearDown() override;

    // The chord, with the left-hand keys.
    void pressChord() const;
    void releaseChord() const;
    void tapChord() const;
    /// For longer than a tap can be. Where a hold is to change nothing, only the clock tells its
    /// length. other: a key that goes down right after the chord and
    /// up before it.
    void holdChord(const std::string& other = {}) const;

    /// Taps, and waits for what a tap does.
    rig::ScreenWindow tapToShow();
    void tapToHide();
    rig::ScreenWindow awaitPanel();
    void awaitNoPanel();
    bool isPanelShown() const { return panel.shown(kelo->identifier()).has_value(); }
    /// Waits until the panel lies there.
    void awaitPlace(const rig::ScreenWindow& shown, const rig::Area& place) const;
    /// Waits until the widget's page is drawn in the panel, and its script has run.
    void awaitWidgetPage(const rig::ScreenWindow& shown) const;
    void awaitKeyboard(const rig::ScreenWindow& shown) const;
    /// Clicks what the widget's page shows.
    void clickInPanel(const rig::ScreenWindow& shown, const rig::Wanted& wanted) const;
    /// Where the panel belongs on a monitor: at its bottom centre.
    static rig::Area placeOn(const rig::Area& monitor);
    rig::Area wholeScreen() const;

    std::optional<rig::ScreenWindow> mainWindow() const;
    /// Waits until the other program has the keyboard, as by a click on a taskbar.
    void goTo(screen::OtherProgram& other) const;
    void awaitReceived(screen::OtherProgram& other, const std::string& text) const;
    /// Lets these pages stand in for the service from now on.
    rig::StandInService& standIn(std::map<std::string, std::string> pages);
    void awaitAsked(const rig::StandInService& service, const std::string& target) const;

    /// What this run of Kelo has written to the debug log.
    std::string debugLog() const;
    /// The web engine's processes that draw pages.
    std::vector<pid_t> webProcesses() const;

    void awaitThat(const std::string& what, const std::function<bool()>& condition) const;

    rig::VoicePanel panel;
    std::unique_ptr<rig::StandInService> pages;

private:
    std::uintmax_t logBegin = 0;
};

} // namespace kelo::e2e
