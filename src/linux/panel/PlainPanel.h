#pragma once

#include "linux/panel/PanelWindow.h"
#include "platform/Panel.h"

#include <memory>

namespace kelo::panel {

/// A panel as an ordinary window without decoration. For panels that do not float, and for Wayland
/// desktops without the layer shell, where no program can put a window on top. The desktop chooses
/// place, workspace and keyboard focus, and gives the focus back when the panel is hidden. It also
/// chooses the shadow: one of our own would count as part of the window. Main thread only.
class PlainPanel : public platform::Panel {
public:
    static std::shared_ptr<PlainPanel> make(const platform::PanelDescription& description);
    explicit PlainPanel(const platform::PanelDescription& description, int margin = 0);
    PlainPanel(const PlainPanel&) = delete;
    PlainPanel& operator=(const PlainPanel&) = delete;

    void setContentView(platform::PanelContent content) override;
    bool isVisible() const override;
    /// The place that was asked for. The desktop does not tell where the window really is.
    platform::Rectangle frame() const override;
    void setFrameOrigin(platform::Point newOrigin) override { origin = newOrigin; }
    void setScreensHandler(std::function<void()>) override {}
    void setCloseHandler(std::function<void()> handler) override;
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
