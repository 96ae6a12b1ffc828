#include "linux/gtk/windows/SettingsWindow.h"

#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <gtkmm/box.h>
#include <gtkmm/label.h>

#include <utility>

namespace kelo::gtk {

namespace {

Gtk::Widget* makeRow(const platform::LabeledRow& row) {
    auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 12);
    auto* label = Gtk::make_managed<Gtk::Label>(row.label);
    label->set_halign(Gtk::Align::START);
    label->set_hexpand();
    auto* value = Gtk::make_managed<Gtk::Label>(row.value);
    // Neither versions nor host names are ever read from the right.
    value->set_direction(Gtk::TextDirection::LTR);
    value->set_ellipsize(Pango::EllipsizeMode::MIDDLE);
    value->set_selectable();
    value->set_focusable(false); // only the row, because a focused label selects its text
    value->add_css_class("kelo-dim");
    line->append(*label);
    line->append(*value);
    return line;
}

} // namespace

SettingsWindow::SettingsWindow(platform::SettingsScene scene, std::function<void()> closed)
    : ProgramWindow(std::move(closed)), scene(std::move(scene)) {
    set_title(translated("Settings"));
    add_css_class("kelo-main");
    set_titlebar(header);
    set_resizable(false);
    rows.set_selection_mode(Gtk::SelectionMode::NONE);
    rows.set_valign(Gtk::Align::CENTER);
    rows.set_margin(16);
    rows.set_hexpand();
    rows.add_css_class("kelo-group");
    setAccessibleName(rows, translated("Settings"));
    draw();
    space.append(rows);
    set_child(limit);
    whenEscapeIsPressed(*this, [this] {
        close();
        return true;
    });
    if (this->scene.content.observed)
        redrawing.emplace(this->scene.content.observed(), [this] { draw(); });
}

void SettingsWindow::draw() {
    const auto description = scene.content.body();
    space.set_size_request(static_cast<int>(description.size.width),
                           static_cast<int>(description.size.height));
    limit.setMaximum(static_cast<int>(description.size.width));
    while (auto* row = rows.get_row_at_index(0))
        rows.remove(*row);
    for (const auto& row : description.rows) {
        rows.append(*makeRow(row));
        auto* last = rows.get_row_at_index(static_cast<int>(&row - description.rows.data()));
        last->set_activatable(false);
        setAccessibleName(*last, row.label + ": " + row.value);
    }
}

} // namespace kelo::gtk
