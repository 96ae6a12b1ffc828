#include "linux/gtk/kit/HeightLimit.h"

#include <pangomm/context.h>
#include <pangomm/fontmetrics.h>

#include <algorithm>

namespace kelo::gtk {

namespace {

/// In pixels.
int heightOfLine(Gtk::Widget& widget) {
    const auto context = widget.get_pango_context();
    const auto metrics = context->get_metrics(context->get_font_description());
    return PANGO_PIXELS(metrics.get_ascent() + metrics.get_descent());
}

} // namespace

HeightLimit::HeightLimit(Gtk::Widget& child) : Glib::ObjectBase("KeloHeightLimit"), child(child) {
    set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    set_child(child);
}

HeightLimit::~HeightLimit() {
    unset_child();
}

void HeightLimit::setMaximumInLines(int lines) {
    maximumInLines = lines;
    queue_resize();
}

Gtk::SizeRequestMode HeightLimit::get_request_mode_vfunc() const {
    return Gtk::SizeRequestMode::HEIGHT_FOR_WIDTH;
}

// A scrolled window measures its child as if no text in it were wrapped.
void HeightLimit::measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum,
                                int& natural, int& minimumBaseline, int& naturalBaseline) const {
    Gtk::ScrolledWindow::measure_vfunc(orientation, forSize, minimum, natural, minimumBaseline,
                                       naturalBaseline);
    if (orientation == Gtk::Orientation::HORIZONTAL)
        return;
    int least = 0;
    int wanted = 0;
    int unused = 0;
    child.measure(orientation, forSize, least, wanted, unused, unused);
    natural = std::max(minimum, std::min(wanted, maximumInLines * heightOfLine(child)));
}

} // namespace kelo::gtk
