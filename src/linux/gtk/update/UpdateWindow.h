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

/// The updater's one window: a heading, a sentence, and below them what the moment needs.
class UpdateWindow final : public Gtk::Window {
public:
    struct Choice {
        std::string label;
        std::function<void()> chosen;
        /// Return chooses it.
        bool isDefault = false;
        /// Stands apart from the others, at the start of the line.
        bool apart = false;
    };
    struct Progress {
        /// 0 to 1; nothing when nobody knows how long it takes.
        std::optional<double> fraction;
        std::string text;
    };
    struct Content {
        std::string heading;
        std::string sentence;
        updater::ReleaseNotes notes = {};
        std::optional<Progress> progress = std::nullopt;
        std::vector<Choice> choices = {};
        /// Escape, or the window manager's close. The window does not go by itself.
        std::function<void()> dismissed = nullptr;
    };

    UpdateWindow();
    ~UpdateWindow() override;

    /// Takes the place of what was shown; does not put the window on the screen.
    void setContent(Content content);
    /// Of the content that is shown; ignored when it has none.
    void setProgress(const Progress& progress);

    /// Takes no more answers until there is other content.
    void closeToAnswers();

private:
    void addButtons(const std::vector<Choice>& choices);
    void choose(std::size_t index);

    Content shown;
    Gtk::Box column{Gtk::Orientation::VERTICAL, 16};
    Gtk::Image icon;
    Gtk::Label heading;
    Gtk::Label sentence;
    ReleaseNotesView notes;
    Gtk::Box progressLine{Gtk::Orientation::VERTICAL, 6};
    Gtk::ProgressBar bar;
    Gtk::Spinner spinner; ///< in the bar's place while nobody knows how long it takes
    Gtk::Label progressText;
    Gtk::Box buttons{Gtk::Orientation::HORIZONTAL, 12};
};

} // namespace kelo::gtk
