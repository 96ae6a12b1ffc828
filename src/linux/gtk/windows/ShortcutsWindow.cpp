#include "linux/gtk/windows/ShortcutsWindow.h"

#include "base/Translation.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <gtkmm/label.h>
#include <gtkmm/listbox.h>
#include <gtkmm/shortcutlabel.h>

#include <utility>

namespace kelo::gtk {

namespace {

std::string spoken(const std::string& accelerator) {
    guint key = 0;
    GdkModifierType modifiers{};
    gtk_accelerator_parse(accelerator.c_str(), &key, &modifiers);
    const gobject::GText text(gtk_accelerator_get_label(key, modifiers));
    return text.get();
}

Gtk::Widget* makeLine(const ShortcutRow& row) {
    auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 24);
    auto* title = Gtk::make_managed<Gtk::Label>(row.title);
    title->set_halign(Gtk::Align::START);
    title->set_hexpand();
    line->append(*title);
    auto* keys = Gtk::make_managed<Gtk::ShortcutLabel>(row.accelerator);
    setAccessibleRole(*keys, GTK_ACCESSIBLE_ROLE_GROUP);
    line->append(*keys);
    return line;
}

std::vector<ShortcutGroup> keysOutsideMenus() {
    return {{translated("Page"),
             {{translated("Caret in the text, on or off"), "F7"},
              {translated("To the bars about the page and back"), "F6"}}},
            {translated("Everywhere"), {{translated("Voice widget"), "<Control><Alt>"}}}};
}

} // namespace

ShortcutsWindow::ShortcutsWindow(const std::vector<ShortcutGroup>& groups,
                                 std::function<void()> closed)
    : ProgramWindow(std::move(closed)) {
    set_title(translated("Keyboard Shortcuts"));
    add_css_class("kelo-main");
    set_titlebar(header);
    column.set_margin(16);
    for (const auto& group : groups)
        if (!group.rows.empty())
            add(group);
    for (const auto& group : keysOutsideMenus())
        add(group);
    view.set_child(column);
    view.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    view.set_propagate_natural_height();
    constexpr int tallest = 560;
    view.set_max_content_height(tallest);
    set_child(view);
    whenEscapeIsPressed(*this, [this] {
        close();
        return true;
    });
}

void ShortcutsWindow::add(const ShortcutGroup& group) {
    auto* title = Gtk::make_managed<Gtk::Label>(group.title);
    title->set_halign(Gtk::Align::START);
    title->add_css_class("kelo-title");
    auto* rows = Gtk::make_managed<Gtk::ListBox>();
    rows->set_selection_mode(Gtk::SelectionMode::NONE);
    rows->add_css_class("kelo-group");
    setAccessibleName(*rows, group.title);
    for (std::size_t index = 0; index < group.rows.size(); ++index) {
        const auto& row = group.rows[index];
        rows->append(*makeLine(row));
        auto* drawn = rows->get_row_at_index(static_cast<int>(index));
        drawn->set_activatable(false);
        setAccessibleName(*drawn, row.title + ": " + spoken(row.accelerator));
    }
    column.append(*title);
    column.append(*rows);
}

} // namespace kelo::gtk
