#pragma once

#include "linux/gtk/main/OverlayPanel.h"
#include "platform/SceneGraph.h"

#include <gtkmm/widget.h>

#include <memory>

namespace kelo::window {
class HostedWidget;
}

namespace kelo::gtk {

/// The content of a main window: a web view from edge to edge and, if the description has an
/// overlay, a panel above its bottom centre. Outside of the panel, the page receives all input.
class ContentArea final : public Gtk::Widget {
public:
    explicit ContentArea(platform::Size defaultSize);
    ~ContentArea() override;

    void draw(const platform::WebContentDescription& description);
    /// Gives up the web view, so that another window can show it. The next draw() takes it back.
    void releaseWebView();
    /// Call it when the widget, a descendant of this one, received the keyboard focus.
    void rememberFocus(const Gtk::Widget& focus);
    /// Focuses the descendant that had the focus last, the page at first.
    void takeFocus();

protected:
    Gtk::SizeRequestMode get_request_mode_vfunc() const override;
    void measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum, int& natural,
                       int& minimumBaseline, int& naturalBaseline) const override;
    void size_allocate_vfunc(int width, int height, int baseline) override;

private:
    void takeWebView(const std::shared_ptr<platform::EmbeddedWebView>& next);
    void focusWebView();
    void drawOverlay(const std::optional<platform::OverlayDescription>& description);

    std::shared_ptr<platform::EmbeddedWebView> webView;
    window::HostedWidget* hosted = nullptr; ///< the same object as webView
    OverlayPanel panel;
    platform::Size defaultSize;
    platform::Size minimumSize;
    double bottomPadding = 0;
    bool panelHadFocusLast = false;
};

} // namespace kelo::gtk
