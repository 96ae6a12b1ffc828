#pragma once

#include "linux/panel/PanelWindow.h"
#include "platform/Panel.h"

#include <memory>

namespace kelo::panel {

/// A panel where programs have no say in what lies on top: an ordinary window without decoration.
/// The compositor decides on its place, its workspace, and whether it gets the keyboard when it
/// appears; whoever had the keyboard gets it back from the compositor as well. Main thread only.
///
/// Of the description, only size, colour and corners can be followed. A shadow is left to the
/// compositor: one of ours would count as a part of the window when it is placed.
class PlainPanel : public platform::Panel {
public:
    static std::shared_ptr<PlainPanel> make(const platform::PanelDescription& description);
    explicit PlainPanel(const platform::PanelDescription& description, int margin = 0);
    PlainPanel(const PlainPanel&) = delete;
    PlainPanel& operator=(const PlainPanel&) = delete;

    void setContentView(platform::PanelContent content) override;
    bool isVisible() const override;
    /// Where the panel was asked to be.
    platform::Rectangle frame() const override;
    void setFrameOrigin(platform::Point newOrigin) override { origin = newOrigin; }
    void makeKeyAndOrderFront() override;
    void makeFirstResponder(const std::shared_ptr<platform::EmbeddedWebView>& view) override;
    void orderOut() override;

protected:
    PanelWindow& panelWindow() { return window; }
    platform::Point frameOrigin() const { return origin; }

private:
    PanelWindow window;
    platform::Point origin;
};

} // namespace kelo::panel
