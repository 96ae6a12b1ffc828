#pragma once

#include "updater/driver/ReleaseNotes.h"

#include <gtkmm/scrolledwindow.h>
#include <gtkmm/textview.h>

namespace kelo::gtk {

/// Shows release notes: text that can be scrolled, selected and copied, without links.
class ReleaseNotesView final : public Gtk::ScrolledWindow {
public:
    ReleaseNotesView();

    void show(const updater::ReleaseNotes& notes);

private:
    Gtk::TextView text;
};

} // namespace kelo::gtk
