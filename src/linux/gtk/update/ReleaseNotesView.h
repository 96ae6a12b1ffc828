#pragma once

#include "updater/driver/ReleaseNotes.h"

#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>

#include <functional>
#include <string>

namespace kelo::gtk {

/// Shows release notes: text that can be scrolled, selected and copied, with links that can be
/// followed by click and by keyboard, and that show their addresses.
class ReleaseNotesView final : public Gtk::ScrolledWindow {
public:
    ReleaseNotesView();

    /// openLink: called with the address of a link that the user follows; may be null.
    void show(const updater::ReleaseNotes& notes, std::function<void(const std::string&)> openLink);

private:
    Gtk::Label text;
    std::function<void(const std::string&)> open;
};

} // namespace kelo::gtk
