#pragma once

#include "linux/window/HostedWidget.h"
#include "platform/EmbeddedWebView.h"

#include <gtkmm/drawingarea.h>

#include <stdexcept>

namespace kelo::tests {

/// A page of one colour that takes the keyboard and counts its clicks.
class FakePage final : public platform::EmbeddedWebView, public window::HostedWidget {
public:
    FakePage();

    GtkWidget* widget() override { return GTK_WIDGET(area.gobj()); }
    void load(platform::UrlRequest) override {}
    std::optional<Url> url() const override { return std::nullopt; }
    void setNavigationDelegate(std::weak_ptr<platform::NavigationDelegate>) override {}
    void setUserInterfaceDelegate(std::weak_ptr<platform::UserInterfaceDelegate>) override {}
    void setAllowsBackForwardNavigationGestures(bool) override {}
    platform::CookieStore& cookieStore() override { throw std::logic_error("no cookies here"); }

    Gtk::DrawingArea area;
    int clicks = 0;
};

} // namespace kelo::tests
