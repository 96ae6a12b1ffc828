#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "platform/Panel.h"

#include <gtk/gtk.h>

#include <memory>

namespace kelo::panel {

/// The toolkit's window behind a panel: its contents with rounded corners and, where there is room
/// for it, a shadow around them. It belongs to no application, so that it does not count among the
/// program's windows. Not on the screen until its owner shows it. Main thread only.
class PanelWindow {
public:
    /// margin: points around the panel, within the window, that are left to the shadow.
    PanelWindow(const platform::PanelDescription& description, int margin);
    ~PanelWindow();
    PanelWindow(const PanelWindow&) = delete;
    PanelWindow& operator=(const PanelWindow&) = delete;

    /// Contents that the toolkit cannot draw are kept, and nothing is shown in their place.
    void setContent(platform::PanelContent content);
    /// The view gets the keys as soon as the window has the keyboard. Ignored unless it is inside.
    void focusView(const std::shared_ptr<platform::EmbeddedWebView>& view);

    GtkWindow* gtkWindow() const { return window.get(); }
    GtkWidget* widget() const { return GTK_WIDGET(window.get()); }
    /// Null until the window was realized.
    GdkSurface* surface() const;

    platform::Size size() const { return size_; }
    int margin() const { return margin_; }
    double cornerRadius() const { return content.cornerRadius; }

private:
    void applyStyle();

    platform::Size size_;
    int margin_;
    bool isClear;
    bool hasShadow;
    platform::PanelContent content;
    gobject::GObjectPointer<GtkWindow> window;
    gobject::GObjectPointer<GtkWidget> frame;
    gobject::GObjectPointer<GtkCssProvider> style;
};

/// A length in points, to the nearest whole one.
int wholePoints(double length);

} // namespace kelo::panel
