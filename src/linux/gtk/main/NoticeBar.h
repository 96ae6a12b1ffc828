#pragma once

#include <gtkmm/box.h>
#include <gtkmm/label.h>

#include <functional>
#include <string>

namespace kelo::gtk {

/// A slim bar with a sentence about the page below it, and buttons that do something about it.
/// Hidden at first.
class NoticeBar final : public Gtk::Box {
public:
    /// role: how assistive technology takes the bar.
    explicit NoticeBar(GtkAccessibleRole role);

    void addButton(const std::string& label, std::function<void()> action);
    /// ending: the end of the sentence, set off from the rest. Where there is not enough room, the
    /// sentence loses its end, and the ending its beginning.
    void setSentence(const std::string& sentence, const std::string& ending = "");

    bool holdsFocus() { return get_focus_child() != nullptr; }
    /// Gives the keyboard to the first button.
    void takeFocus();

private:
    Gtk::Label beginning;
    Gtk::Label end;
};

} // namespace kelo::gtk
