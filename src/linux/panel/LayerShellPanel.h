#pragma once

#include "linux/panel/LayerShellKeyboard.h"
#include "linux/panel/PlainPanel.h"

#include <memory>

namespace kelo::panel {

/// A floating panel on a Wayland compositor with the layer shell: on every workspace, with the
/// keyboard when it appears. It is over full-screen windows if the description asks for that, and
/// on the first monitor, clear of the desktop's own panels. If that monitor goes while the panel is
/// shown, it moves to the one that is then the first; without any, it is hidden. Main thread only.
class LayerShellPanel final : public PlainPanel {
public:
    /// Whether the compositor has the layer shell. GTK must be up.
    static bool isSupported();
    static std::shared_ptr<LayerShellPanel> make(const platform::PanelDescription& description);
    explicit LayerShellPanel(const platform::PanelDescription& description);
    ~LayerShellPanel() override;

    /// Keeps the distance from the lower edge of the work area. Also keeps the distance from the
    /// left edge, unless the panel is centred.
    void setFrameOrigin(platform::Point origin) override;
    void setScreensHandler(std::function<void()> handler) override;
    void makeKeyAndOrderFront() override;
    void orderOut() override;

private:
    void appear();
    void monitorsChanged();

    LayerShellKeyboard keyboard;
    /// The monitor that the compositor was told when the panel was last shown.
    gobject::GObjectPointer<GdkMonitor> monitor;
    gobject::GObjectPointer<GListModel> monitors;
    std::function<void()> screensChanged;
    gobject::ScheduledJob reaction;
};

} // namespace kelo::panel
