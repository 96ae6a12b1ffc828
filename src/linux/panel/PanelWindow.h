#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/gobject/MainLoopSource.h"
#include "platform/Panel.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>

namespace kelo::panel {

/// The toolkit's window of a panel. Its contents have rounded corners and, if there is a margin for
/// it, a shadow. It belongs to no application, so it does not count among the program's windows.
/// Hidden until its owner shows it. Main thread only.
class PanelWindow {
public:
    /// margin: points between the panel and the window's edges, for the shadow. hide: called when
    /// the desktop or the loss of the keyboard is to hide the window.
    PanelWindow(const platform::PanelDescription& description, int margin,
                std::function<void()> hide);
    ~PanelWindow();
    PanelWindow(const PanelWindow&) = delete;
    PanelWindow& operator=(const PanelWindow&) = delete;

    /// Contents that are not a widget of the toolkit are kept alive but not shown.
    void setContent(platform::PanelContent content);
    /// Called after the desktop has hidden the window.
    void setCloseHandler(std::function<void()> handler) { closed = std::move(handler); }
    /// Hides the window because the desktop wants it, or has no place for it.
    void leave();
    /// Gives the view the focus within the window. Ignored if the view is not inside.
    void focusView(const std::shared_ptr<platform::EmbeddedWebView>& view);

    GtkWindow* gtkWindow() const { return window.get(); }
    GtkWidget* widget() const { return GTK_WIDGET(window.get()); }
    /// Null until the window is realized.
    GdkSurface* surface() const;

    platform::Size size() const { return size_; }
    int margin() const { return margin_; }
    double cornerRadius() const { return content.cornerRadius; }

private:
    void applyStyle();
    void hideWhenInactive();

    platform::Size size_;
    int margin_;
    bool isClear;
    bool hasShadow;
    platform::PanelContent content;
    gobject::GObjectPointer<GtkWindow> window;
    gobject::GObjectPointer<GtkWidget> frame;
    gobject::GObjectPointer<GtkCssProvider> style;
    std::function<void()> hide;
    std::function<void()> closed;
    /// Looks whether the program still has the keyboard.
    gobject::ScheduledJob deactivation;
};

/// A length in points, to the nearest whole one.
int wholePoints(double length);

} // namespace kelo::panel
