#pragma once

#include "linux/gtk/main/OverlayPanel.h"
#include "linux/gtk/main/PageBars.h"
#include "platform/SceneGraph.h"

#include <gtkmm/widget.h>
#include <sigc++/signal.h>

#include <functional>
#include <memory>
#include <optional>

namespace kelo::gtk {

/// The content of a main window: a web view from edge to edge and, if the description has an
/// overlay, a panel above its bottom centre. Outside of the panel, the page receives all input.
///
/// Bars say what is to be said about the page; F6 moves the keyboard to a bar and back. There is no
/// panel while the page is not the service's.
class ContentArea final : public Gtk::Widget {
public:
    explicit ContentArea(platform::Size defaultSize);
    ~ContentArea() override;

    /// Its web view must be a HostedPage. One that shows a page of another host when it comes is
    /// sent back to the service.
    void draw(const platform::WebContentDescription& description);
    /// The window is closed. Gives up the web view, so that another window can show it, and sends
    /// it back to the service if its page is not the service's.
    void close();
    /// The page of the web view; null once the window is closed.
    window::HostedPage* page() const { return hosted; }
    /// Emitted after the page, its title or its host has changed.
    sigc::signal<void()>& signalPageChanged() { return pageChanged; }
    /// Call it when the widget, a descendant of this one, received the keyboard focus.
    void rememberFocus(const Gtk::Widget& focus);
    /// Whether F6 leads from where the keyboard is to a bar about the page.
    bool leadsToBar() { return bars.areShown() && !bars.holdFocus(); }
    /// Focuses the descendant that had the focus last, the page at first.
    void takeFocus();

protected:
    Gtk::SizeRequestMode get_request_mode_vfunc() const override;
    void measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum, int& natural,
                       int& minimumBaseline, int& naturalBaseline) const override;
    void size_allocate_vfunc(int width, int height, int baseline) override;

private:
    void offerBarsByKey();
    void releaseWebView();
    void takeWebView(const std::shared_ptr<platform::EmbeddedWebView>& next);
    void focusWebView();
    void drawOverlay();

    std::shared_ptr<platform::EmbeddedWebView> webView;
    window::HostedPage* hosted = nullptr; ///< the same object as webView
    std::shared_ptr<const std::function<void()>> pageObserver;
    std::shared_ptr<const std::function<void()>> loadObserver;
    sigc::signal<void()> pageChanged;
    PageBars bars{*this};
    OverlayPanel panel;
    std::optional<platform::OverlayDescription> overlay;
    platform::Size defaultSize;
    bool panelHadFocusLast = false;
};

} // namespace kelo::gtk
