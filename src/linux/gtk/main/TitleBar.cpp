#include "linux/gtk/main/TitleBar.h"

#include "base/ShownText.h"
#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/WindowPresentation.h"
#include "linux/gtk/main/MenuBar.h"
#include "linux/window/HostedPage.h"
#include "linux/window/PageControls.h"

#include <gtkmm/window.h>

#include <string>
#include <string_view>

namespace kelo::gtk {

namespace {

/// For lists of windows, where the program has to be told from others.
std::string windowTitle(const std::string& title) {
    if (title.empty())
        return programName;
    const bool namesProgram = title.find(programName) != std::string::npos;
    return namesProgram ? title : title + " – " + programName;
}

void prepareLabel(Gtk::Label& label, const char* style) {
    label.add_css_class(style);
    label.set_single_line_mode();
    label.set_ellipsize(Pango::EllipsizeMode::END);
    label.set_visible(false);
}

} // namespace

TitleBar::TitleBar(const Glib::RefPtr<Gio::MenuModel>& menu) : menuBar(menu) {
    addButton(back, "go-previous-symbolic", untranslated("Back"), "win.back");
    addButton(reload, "view-refresh-symbolic", untranslated("Reload"), "win.reload");
    pack_start(menuBar);
    menuBar.set_valign(Gtk::Align::CENTER);
    makeAccessible(menuBar);
    leaveKeyboardAlone(menuBar);
    setAccessibleName(menuBar, translated("Main menu"));
    prepareLabel(title, "title");
    prepareLabel(host, "subtitle");
    // The end of a host says whose it is.
    host.set_ellipsize(Pango::EllipsizeMode::START);
    titles.set_valign(Gtk::Align::CENTER);
    titles.append(title);
    titles.append(host);
    set_title_widget(titles);
}

void TitleBar::addButton(Gtk::Button& button, const char* icon, const char* name,
                         const char* action) {
    button.set_icon_name(icon);
    button.add_css_class("flat");
    // The page keeps the keyboard when the button is clicked.
    button.set_focus_on_click(false);
    button.set_action_name(action);
    button.set_tooltip_text(translated(name));
    setAccessibleName(button, translated(name));
    pack_start(button);
}

void TitleBar::draw(const window::HostedPage* page) {
    const std::string shown = page ? shownName(page->controls().title()) : "";
    // The main menu beside it says the program's name already.
    title.set_text(shown);
    title.set_visible(!shown.empty() && shown != programName);
    const std::string shownHost = page ? page->foreignHost().value_or("") : "";
    host.set_text(shownHost);
    host.set_visible(!shownHost.empty());
    if (auto* const window = dynamic_cast<Gtk::Window*>(get_root()))
        window->set_title(windowTitle(shown));
}

} // namespace kelo::gtk
