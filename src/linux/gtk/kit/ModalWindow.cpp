#include "linux/gtk/kit/ModalWindow.h"

#include "linux/gtk/kit/Style.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <gtkmm/windowhandle.h>

#include <algorithm>
#include <vector>

namespace kelo::gtk {

namespace {

std::vector<ModalWindow*>& stack() {
    static std::vector<ModalWindow*> open;
    return open;
}

} // namespace

ModalWindow* ModalWindow::topmost() {
    for (auto each = stack().rbegin(); each != stack().rend(); ++each)
        if ((*each)->get_visible())
            return *each;
    return nullptr;
}

ModalWindow::ModalWindow(Gtk::Window* parent) {
    if (auto* modal = topmost())
        set_transient_for(*modal);
    else if (parent && parent->get_mapped())
        set_transient_for(*parent);
    stack().push_back(this);
    set_title(programName);
    set_modal();
    set_resizable(false);
    add_css_class("kelo-dialog");

    // With an invisible title bar the dialog looks the same under every window manager. It can be
    // dragged at any point.
    auto* nothing = Gtk::make_managed<Gtk::Box>();
    nothing->set_visible(false);
    set_titlebar(*nothing);
    auto* handle = Gtk::make_managed<Gtk::WindowHandle>();
    handle->set_child(column);
    set_child(*handle);

    signal_map().connect([this] { dimParent(true); });
    unmapping = signal_unmap().connect([this] { dimParent(false); });
    signal_close_request().connect(
        [this] {
            dismissed();
            return true;
        },
        false);
    whenEscapeIsPressed(*this, [this] {
        dismissed();
        return true;
    });
}

ModalWindow::~ModalWindow() {
    unmapping.disconnect();
    // One that has been closed may be followed by another.
    if (get_mapped())
        dimParent(false);
    std::erase(stack(), this);
    unset_default_widget();
    unset_child();
}

void ModalWindow::dimParent(bool isDimmed) {
    if (auto* parent = get_transient_for())
        setClass(*parent, "kelo-dimmed", isDimmed);
}

} // namespace kelo::gtk
