#include "linux/gtk/main/NoticeBar.h"

#include "linux/gtk/kit/Accessibility.h"

#include <gtkmm/button.h>

#include <utility>

namespace kelo::gtk {

NoticeBar::NoticeBar(GtkAccessibleRole role) : Gtk::Box(Gtk::Orientation::HORIZONTAL, 6) {
    add_css_class("kelo-notice");
    setAccessibleRole(*this, role);
    beginning.set_ellipsize(Pango::EllipsizeMode::END);
    beginning.set_xalign(0);
    append(beginning);
    end.add_css_class("kelo-notice-end");
    // Whoever owns a host chooses how it begins, but not how it ends.
    end.set_ellipsize(Pango::EllipsizeMode::START);
    end.set_xalign(0);
    end.set_hexpand();
    append(end);
    set_visible(false);
}

void NoticeBar::addButton(const std::string& label, std::function<void()> action) {
    auto* const button = Gtk::make_managed<Gtk::Button>(label);
    button->signal_clicked().connect(std::move(action));
    append(*button);
}

void NoticeBar::setSentence(const std::string& sentence, const std::string& ending) {
    beginning.set_text(sentence);
    end.set_text(ending);
    setAccessibleName(*this, ending.empty() ? sentence : sentence + " " + ending);
}

void NoticeBar::takeFocus() {
    child_focus(Gtk::DirectionType::TAB_FORWARD);
}

} // namespace kelo::gtk
