#pragma once

#include "fakes/FakeWebView.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/window/HostedWidget.h"

#include <gtk/gtk.h>

#include <string>

namespace kelo::test {

/// What stands in for a web view where the engine is not needed: one colour all over, and an entry
/// in the middle that shows what the keyboard brings.
class FakeContent final : public platform::EmbeddedWebView, public window::HostedWidget {
public:
    static constexpr unsigned color = 0x3366cc; ///< 0xRRGGBB

    FakeContent();
    ~FakeContent() override;

    GtkWidget* widget() override { return area.get(); }

    std::string typed() const;
    void clear();
    /// The entry blinks a caret: it has the focus within its window, and that window is active.
    bool hasCaret() const;
    /// A menu as a page's select element brings it up: a window of its own.
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
