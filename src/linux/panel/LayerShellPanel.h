#pragma once

#include "linux/panel/PlainPanel.h"

#include <memory>

namespace kelo::panel {

/// A panel on a Wayland compositor with the layer shell: in the layer above full-screen windows, on
/// every workspace, with the keyboard when it appears. The compositor shows it on the monitor that
/// is in use, above what its own panels keep for themselves. Main thread only.
class LayerShellPanel final : public PlainPanel {
public:
    /// Whether the compositor has the layer shell. GTK must be up.
    static bool isSupported();
    static std::shared_ptr<LayerShellPanel> make(const platform::PanelDescription& description);
    explicit LayerShellPanel(const platform::PanelDescription& description);

    /// The distance from the lower edge of the screen's free part is kept, on whatever monitor the
    /// panel appears; and from its left edge, unless the panel is to be in the middle.
    void setFrameOrigin(platform::Point origin) override;
};

} // namespace kelo::panel
