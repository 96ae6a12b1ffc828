#pragma once

#include "linux/panel/PlainPanel.h"

#include <memory>

namespace kelo::panel {

/// A floating panel on a Wayland compositor with the layer shell: on every workspace, with the
/// keyboard when it appears. It is over full-screen windows if the description asks for that. The
/// compositor shows it on the monitor in use, clear of the desktop's own panels. Main thread only.
class LayerShellPanel final : public PlainPanel {
public:
    /// Whether the compositor has the layer shell. GTK must be up.
    static bool isSupported();
    static std::shared_ptr<LayerShellPanel> make(const platform::PanelDescription& description);
    explicit LayerShellPanel(const platform::PanelDescription& description);

    /// Keeps the distance from the lower edge of the work area, whichever monitor the panel appears
    /// on. Also keeps the distance from the left edge, unless the panel is centred.
    void setFrameOrigin(platform::Point origin) override;
    void setScreensHandler(std::function<void()>) override {}
};

} // namespace kelo::panel
