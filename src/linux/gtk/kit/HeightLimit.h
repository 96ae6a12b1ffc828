#pragma once

#include <gtkmm/scrolledwindow.h>

namespace kelo::gtk {

/// Asks for the height that its one child needs at the width it gets, up to a maximum; what does
/// not fit is scrolled.
class HeightLimit final : public Gtk::ScrolledWindow {
public:
    /// The child is owned by the caller and must outlive this.
    explicit HeightLimit(Gtk::Widget& child);
    ~HeightLimit() override;

    /// In lines of the text that the widget inherits, so that it grows with what the user set.
    void setMaximumInLines(int lines);

protected:
    Gtk::SizeRequestMode get_request_mode_vfunc() const override;
    void measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum, int& natural,
                       int& minimumBaseline, int& naturalBaseline) const override;

private:
    Gtk::Widget& child;
    int maximumInLines = 0;
};

} // namespace kelo::gtk
