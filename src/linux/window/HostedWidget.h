#pragma once

extern "C" {
typedef struct _GtkWidget GtkWidget;
}

namespace kelo::window {

/// Something with a widget that other rooms put into their windows, such as an EmbeddedWebView.
class HostedWidget {
public:
    virtual ~HostedWidget() = default;
    /// Always the same widget. It is owned by this object and outlives the windows it was in.
    virtual GtkWidget* widget() = 0;
};

} // namespace kelo::window
