#pragma once

#include <gtkmm/widget.h>

namespace kelo::gtk {

/// A container that uses the offered width up to a maximum, and centres its one child.
class WidthLimit final : public Gtk::Widget {
public:
    /// The child is owned by the caller and must outlive this.
    explicit WidthLimit(Gtk::Widget& child);
    ~WidthLimit() override;

    /// In points; 0 for no limit.
    void setMaximum(int width);

protected:
    Gtk::SizeRequestMode get_request_mode_vfunc() const override;
    void measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum, int& natural,
                       int& minimumBaseline, int& naturalBaseline) const override;
    void size_allocate_vfunc(int width, int height, int baseline) override;

private:
    Gtk::Widget& child;
    int maximum = 0;
};

} // namespace kelo::gtk
