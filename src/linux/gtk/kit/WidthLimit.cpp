#include "linux/gtk/kit/WidthLimit.h"

#include "linux/gtk/kit/Accessibility.h"

#include <algorithm>

namespace kelo::gtk {

WidthLimit::WidthLimit(Gtk::Widget& child) : Glib::ObjectBase("KeloWidthLimit"), child(child) {
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_GROUP);
    child.set_parent(*this);
}

WidthLimit::~WidthLimit() {
    child.unparent();
}

void WidthLimit::setMaximum(int width) {
    if (width == maximum)
        return;
    maximum = width;
    queue_resize();
}

Gtk::SizeRequestMode WidthLimit::get_request_mode_vfunc() const {
    return Gtk::SizeRequestMode::CONSTANT_SIZE;
}

void WidthLimit::measure_vfunc(Gtk::Orientation orientation, int, int& minimum, int& natural,
                               int& minimumBaseline, int& naturalBaseline) const {
    child.measure(orientation, -1, minimum, natural, minimumBaseline, naturalBaseline);
    if (orientation == Gtk::Orientation::HORIZONTAL && maximum > 0) {
        minimum = std::min(minimum, maximum);
        natural = maximum;
    }
}

void WidthLimit::size_allocate_vfunc(int width, int height, int baseline) {
    int minimum = 0;
    int natural = 0;
    int unused = 0;
    child.measure(Gtk::Orientation::HORIZONTAL, -1, minimum, natural, unused, unused);
    const int limit = maximum > 0 ? std::min(width, maximum) : width;
    const int taken = std::clamp(natural, std::min(minimum, limit), std::max(minimum, limit));
    child.size_allocate({(width - taken) / 2, 0, taken, height}, baseline);
}

} // namespace kelo::gtk
