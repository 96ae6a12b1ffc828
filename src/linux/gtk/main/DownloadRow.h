#pragma once

#include "linux/downloads/DownloadList.h"

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <gtkmm/progressbar.h>

namespace kelo::gtk {

/// One download in the bar: its name, how far it has got or what became of it, and what can be
/// done.
class DownloadRow final : public Gtk::Box {
public:
    /// The list must outlive the row.
    explicit DownloadRow(downloads::DownloadList& list);

    void draw(const downloads::Download& download);

private:
    void addTexts();
    void addButtons();
    void drawProgress();

    downloads::DownloadList& list;
    downloads::Download drawn;
    Gtk::Label name;
    Gtk::Label news;
    Gtk::ProgressBar progress;
    Gtk::Button cancelButton;
    Gtk::Button openButton;
    Gtk::Button showButton;
};

} // namespace kelo::gtk
