#pragma once

#include "fakes/FakeWebView.h"
#include "linux/window/HostedWidget.h"

#include <gtkmm/drawingarea.h>

namespace kelo::tests {

/// A page of one color that takes the keyboard focus and counts its clicks.
class FakePage final : public fakes::FakeWebView, public window::HostedWidget {
public:
    FakePage();

    GtkWidget* widget() override { return GTK_WIDGET(area.gobj()); }

    Gtk::DrawingArea area;
    int clicks = 0;
};

} // namespace kelo::tests
