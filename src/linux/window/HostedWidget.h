#pragma once

extern "C" {
typedef struct _GtkWidget GtkWidget;
}

namespace kelo::window {

/// A part that another room draws into one of its windows: what lies behind an EmbeddedWebView.
class HostedWidget {
public:
    virtual ~HostedWidget() = default;
    /// The same widget at every call; it belongs to the part and outlives every window it was in.
    virtual GtkWidget* widget() = 0;
};

} // namespace kelo::window
