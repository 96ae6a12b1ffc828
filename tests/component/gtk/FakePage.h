#pragma once

#include "fakes/FakeWebView.h"
#include "linux/window/HostedPage.h"

#include <gtkmm/drawingarea.h>

namespace kelo::tests {

/// A page of one color that takes the keyboard focus and counts its clicks. It is the service's
/// unless the test gives it another host, and hangs on command.
class FakePage final : public fakes::FakeWebView, public window::HostedPage {
public:
    FakePage();

    GtkWidget* widget() override { return GTK_WIDGET(area.gobj()); }

    std::optional<std::string> foreignHost() const override { return host; }
    void returnToService() override {
        ++returns;
        setForeignHost(std::nullopt);
    }
    void openInBrowser() override { ++openings; }
    void setPageObserver(std::weak_ptr<const std::function<void()>> observer) override {
        pageObserver = std::move(observer);
    }
    bool answers() const override { return !hangs; }
    void reload() override {
        ++reloads;
        setHangs(false);
    }
    void setHangs(bool nowHangs);
    void setForeignHost(std::optional<std::string> newHost);

    Gtk::DrawingArea area;
    int clicks = 0;
    int returns = 0;  ///< to the service
    int openings = 0; ///< in the browser
    int reloads = 0;

private:
    bool hangs = false;
    std::optional<std::string> host;
    std::weak_ptr<const std::function<void()>> pageObserver;
};

} // namespace kelo::tests
