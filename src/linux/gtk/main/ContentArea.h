#pragma once

#include "linux/gtk/main/OverlayPanel.h"
#include "platform/SceneGraph.h"

#include <gtkmm/widget.h>

#include <memory>

namespace kelo::window {
class HostedWidget;
}

namespace kelo::gtk {

/// The content of a main window: a web view from edge to edge and, while the description has one,
/// the panel over its bottom centre. Only the panel itself covers the page: beside it, the page
/// takes all input.
class ContentArea final : public Gtk::Widget {
public:
    explicit ContentArea(platform::Size defaultSize);
    ~ContentArea() override;

    void draw(const platform::WebContentDescription& description);
    /// Lets the web view go, so that another window may take it. The next draw() takes it again.
    void releaseWebView();
    /// The widget, somewhere inside, has the keyboard now.
    void rememberFocus(const Gtk::Widget& focus);
    /// Gives the keyboard to what had it last here, to begin with the page.
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
    bool panelWasLast = false; ///< to have the keyboard
};

} // namespace kelo::gtk
