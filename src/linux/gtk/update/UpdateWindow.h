#pragma once

#include "linux/gtk/update/ReleaseNotesView.h"
#include "updater/driver/ReleaseNotes.h"

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/image.h>
#include <gtkmm/label.h>
#include <gtkmm/progressbar.h>
#include <gtkmm/spinner.h>
#include <gtkmm/window.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelo::gtk {

/// What the updater's window shows: a heading, a sentence, and optionally release notes, progress
/// and buttons.
struct UpdateContent {
    struct Choice {
        std::string label;
        std::function<void()> chosen;
        /// The Return key chooses it.
        bool isDefault = false;
        /// Apart from the others, at the start of the row.
        bool apart = false;
    };
    struct Progress {
        /// 0 to 1; empty if the duration is unknown.
        std::optional<double> fraction;
        std::string text;
    };

    std::string heading;
    std::string sentence;
    updater::ReleaseNotes notes = {};
    /// Opens the address of a link in the notes.
    std::function<void(const std::string&)> openLink = nullptr;
    std::optional<Progress> progress = std::nullopt;
    std::vector<Choice> choices = {};
    /// Called when the user pressed Escape or closed the window through the window manager. The
    /// window does not disappear by itself.
    std::function<void()> dismissed = nullptr;
};

/// The updater's only window.
class UpdateWindow final : public Gtk::Window {
public:
    UpdateWindow();
    ~UpdateWindow() override;

    /// Replaces the content. Does not show the window.
    void setContent(UpdateContent content);
    /// Updates the progress of the current content. Ignored if the content has none.
    void setProgress(const UpdateContent::Progress& progress);

    /// Disables the buttons until the next setContent().
    void disableChoices();

private:
    void addButtons(const std::vector<UpdateContent::Choice>& choices);
    void choose(std::size_t index);

    UpdateContent shown;
    Gtk::Box column{Gtk::Orientation::VERTICAL, 16};
    Gtk::Image icon;
    Gtk::Label heading;
    Gtk::Label sentence;
    ReleaseNotesView notes;
    Gtk::Box progressLine{Gtk::Orientation::VERTICAL, 6};
    Gtk::ProgressBar bar;
    Gtk::Spinner spinner; ///< shown instead of the bar if the duration is unknown
    Gtk::Label progressText;
    Gtk::Box buttons{Gtk::Orientation::HORIZONTAL, 12};
};

} // namespace kelo::gtk
