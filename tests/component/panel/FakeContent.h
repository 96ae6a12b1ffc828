#pragma once

#include "fakes/FakeWebView.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/window/HostedWidget.h"

#include <gtk/gtk.h>

#include <string>

namespace kelo::test {

/// Replaces a web view in tests that need no engine: a plain colour with a text entry in the
/// middle.
class FakeContent final : public platform::EmbeddedWebView, public window::HostedWidget {
public:
    static constexpr unsigned color = 0x3366cc; ///< 0xRRGGBB

    FakeContent();
    ~FakeContent() override;

    GtkWidget* widget() override { return area.get(); }

    std::string typed() const;
    void clear();
    /// Whether the entry shows a caret: it has the focus in its window, and that window is active.
    bool hasCaret() const;
    /// Opens a menu in a window of its own, as a page's select element does.
    void openMenu();
    void closeMenu();
    bool menuIsOpen() const;
    /// In points from the contents' upper left corner.
    platform::Point menuMiddle() const;
    int menuChoices() const { return choices; }

    void load(platform::UrlRequest request) override { view.load(std::move(request)); }
    std::optional<Url> url() const override { return view.url(); }
    void setNavigationDelegate(std::weak_ptr<platform::NavigationDelegate>) override {}
    void setUserInterfaceDelegate(std::weak_ptr<platform::UserInterfaceDelegate>) override {}
    void setAllowsBackForwardNavigationGestures(bool) override {}
    void setAllowsMediaCapture(bool) override {}
    platform::CookieStore& cookieStore() override { return view; }

private:
    fakes::FakeWebView view{{}, {}};
    gobject::GObjectPointer<GtkWidget> area;
    gobject::GObjectPointer<GtkWidget> entry;
    gobject::GObjectPointer<GtkCssProvider> style;
    GtkWidget* menu = nullptr;
    int choices = 0;
};

} // namespace kelo::test
