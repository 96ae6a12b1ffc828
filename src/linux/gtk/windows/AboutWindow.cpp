#include "linux/gtk/windows/AboutWindow.h"

#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <gdkmm/texture.h>
#include <gtkmm/label.h>
#include <gtkmm/picture.h>

#include <utility>

namespace kelo::gtk {

namespace {

Gtk::Label* makeLine(const std::string& text, const char* cssClass) {
    auto* line = Gtk::make_managed<Gtk::Label>(text);
    line->add_css_class(cssClass);
    line->set_justify(Gtk::Justification::CENTER);
    return line;
}

} // namespace

AboutWindow::AboutWindow(const std::string& version, std::function<void()> closed)
    : ProgramWindow(std::move(closed)) {
    set_title(translated("About Kelo"));
    add_css_class("kelo-main");
    set_titlebar(header);
    set_resizable(false);
    constexpr int iconSize = 128;
    auto* icon = Gtk::make_managed<Gtk::Picture>(
        Gdk::Texture::create_from_resource("/app/kelo/Kelo/window-128.png"));
    icon->set_size_request(iconSize, iconSize);
    // The name is below it.
    setAccessibleRole(*icon, GTK_ACCESSIBLE_ROLE_PRESENTATION);
    auto* versionLine = makeLine(translated("Version %1", {version}), "kelo-dim");
    // To be copied into a report.
    versionLine->set_selectable();
    versionLine->set_focusable(false); // a label that gets the focus selects its text
    column.set_margin(24);
    column.append(*icon);
    column.append(*makeLine(programName, "kelo-title"));
    column.append(*versionLine);
    column.append(
        *makeLine(translated("Your web assistant in a window of its own"), "kelo-caption"));
    set_child(column);
    whenEscapeIsPressed(*this, [this] {
        close();
        return true;
    });
}

} // namespace kelo::gtk
