#include "linux/gtk/main/MenuBar.h"

#include "linux/gobject/GObjectPointer.h"
#include "linux/menu/MenuEntry.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <utility>

namespace kelo::gtk {

namespace {

/// The part of an entry that is stored in the menu model. The action holds whether it is enabled.
std::string labelKey(const platform::MenuEntry& entry) {
    const auto* label = menu::labelOf(entry);
    return std::to_string(entry.index()) + (label ? *label : "");
}

std::string acceleratorOf(const platform::MenuItem* item) {
    if (!item || !item->shortcut || item->shortcut->key.empty())
        return {};
    const gunichar character = g_utf8_get_char(item->shortcut->key.c_str());
    const auto modifiers = item->shortcut->modifier == platform::KeyModifier::command
                               ? GDK_CONTROL_MASK
                               : static_cast<GdkModifierType>(0);
    const gobject::GText name(gtk_accelerator_name(gdk_unicode_to_keyval(character), modifiers));
    return name.get();
}

/// In the notation of ARIA's "aria-keyshortcuts", from which the toolkit's property was taken.
std::string accessibleShortcut(const std::string& accelerator) {
    guint key = 0;
    GdkModifierType modifiers{};
    if (!gtk_accelerator_parse(accelerator.c_str(), &key, &modifiers))
        return {};
    const gobject::GText label(
        gtk_accelerator_get_label(gdk_keyval_to_upper(key), static_cast<GdkModifierType>(0)));
    return (modifiers & GDK_CONTROL_MASK ? "Control+" : "") + std::string(label.get());
}

template <typename Visit>
void visitDescendants(GtkWidget* widget, const Visit& visit) {
    visit(widget);
    for (auto* child = gtk_widget_get_first_child(widget); child;
         child = gtk_widget_get_next_sibling(child))
        visitDescendants(child, visit);
}

// The toolkit's own menu buttons show their accelerator but leave this property out. Their class is
// private, so they are recognised by their property "accel".
void exposeShortcutOf(GtkWidget* widget) {
    if (!g_object_class_find_property(G_OBJECT_GET_CLASS(widget), "accel"))
        return;
    char* accelerator = nullptr;
    g_object_get(widget, "accel", &accelerator, nullptr);
    const gobject::GText owned(accelerator);
    if (const auto text = accessibleShortcut(owned ? owned.get() : ""); !text.empty())
        gtk_accessible_update_property(GTK_ACCESSIBLE(widget),
                                       GTK_ACCESSIBLE_PROPERTY_KEY_SHORTCUTS, text.c_str(), -1);
    else
        gtk_accessible_reset_property(GTK_ACCESSIBLE(widget),
                                      GTK_ACCESSIBLE_PROPERTY_KEY_SHORTCUTS);
}

// The toolkit would name a menu after the class of its widget.
void nameAfterHeading(GtkWidget* menu) {
    GtkWidget* const heading = gtk_widget_get_first_child(gtk_widget_get_parent(menu));
    if (GTK_IS_LABEL(heading))
        gtk_accessible_update_property(GTK_ACCESSIBLE(menu), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                       gtk_label_get_text(GTK_LABEL(heading)), -1);
}

} // namespace

CommandMenuModel::CommandMenuModel(MenuActions actions, std::string actionPrefix,
                                   platform::CommandMenu menu)
    : actions(std::move(actions)), actionPrefix(std::move(actionPrefix)), menu(std::move(menu)) {
    draw();
    if (this->menu.items.observed)
        redrawing.emplace(this->menu.items.observed(), [this] { draw(); });
}

CommandMenuModel::~CommandMenuModel() {
    for (const auto& entry : entryActions)
        actions.map.remove_action(entry.action->get_name());
}

void CommandMenuModel::draw() {
    items = menu.items.body();
    std::vector<std::string> labels;
    for (const auto& entry : items)
        labels.push_back(labelKey(entry));
    // Rebuilding the model closes an open menu, so the model is kept if only actions changed.
    if (std::exchange(drawnLabels, labels) != labels)
        rebuild();
    for (std::size_t index = 0; index < std::max(items.size(), entryActions.size()); ++index)
        drawAction(index);
}

void CommandMenuModel::rebuild() {
    model_->remove_all();
    auto section = Gio::Menu::create();
    const auto finishSection = [&] {
        if (section->get_n_items() > 0)
            model_->append_section({}, section);
        section = Gio::Menu::create();
    };
    for (std::size_t index = 0; index < items.size(); ++index) {
        const auto* label = menu::labelOf(items[index]);
        if (!label)
            finishSection();
        else
            section->append(menu::withoutMnemonics(*label),
                            itemAt(index) ? actionName(index) : "app.settings");
    }
    finishSection();
}

void CommandMenuModel::drawAction(std::size_t index) {
    const auto* item = itemAt(index);
    if (!item && index >= entryActions.size())
        return;
    auto& entry = actionFor(index);
    entry.action->set_enabled(item && item->enabled);
    if (item && item->checked)
        entry.action->set_state(Glib::Variant<bool>::create(*item->checked));
    const auto accelerator = acceleratorOf(item);
    if (std::exchange(entry.accelerator, accelerator) != accelerator)
        actions.setAccelerator(actionName(index), accelerator);
}

const platform::MenuItem* CommandMenuModel::itemAt(std::size_t index) const {
    return index < items.size() ? std::get_if<platform::MenuItem>(&items[index]) : nullptr;
}

ShortcutGroup CommandMenuModel::shortcuts() const {
    ShortcutGroup group{menu::withoutMnemonics(menu.title), {}};
    for (const auto& entry : items)
        if (const auto* item = std::get_if<platform::MenuItem>(&entry))
            if (const auto accelerator = acceleratorOf(item); !accelerator.empty())
                group.rows.push_back({menu::withoutMnemonics(item->label), accelerator});
    return group;
}

std::string CommandMenuModel::actionName(std::size_t index) const {
    return "app." + actionPrefix + std::to_string(index);
}

CommandMenuModel::EntryAction& CommandMenuModel::actionFor(std::size_t index) {
    while (entryActions.size() <= index) {
        const std::size_t number = entryActions.size();
        const auto* first = itemAt(number);
        const std::string name = actionPrefix + std::to_string(number);
        auto action = first && first->checked
                          ? Gio::SimpleAction::create_bool(name, *first->checked)
                          : Gio::SimpleAction::create(name);
        action->signal_activate().connect([this, number](const Glib::VariantBase&) {
            const auto* item = itemAt(number);
            if (!item || !item->enabled)
                return;
            // A copy, because the action may lead to a drawing that replaces the item.
            if (const auto chosen = item->action)
                chosen();
        });
        actions.map.add_action(action);
        entryActions.push_back({action, {}});
    }
    return entryActions[index];
}

void MenuBar::append(platform::CommandMenu menu) {
    menus.push_back(std::make_unique<CommandMenuModel>(
        actions, "menu-" + std::to_string(menus.size()) + "-", std::move(menu)));
    model_->append_submenu(menu::withoutMnemonics(menus.back()->title()), menus.back()->model());
}

void MenuBar::append(ShortcutGroup keys, const Glib::RefPtr<Gio::MenuModel>& menu) {
    model_->append_submenu(menu::withoutMnemonics(keys.title), menu);
    otherKeys.push_back(std::move(keys));
}

std::vector<ShortcutGroup> MenuBar::shortcuts() const {
    std::vector<ShortcutGroup> groups;
    for (const auto& menu : menus)
        groups.push_back(menu->shortcuts());
    groups.insert(groups.end(), otherKeys.begin(), otherKeys.end());
    return groups;
}

void leaveKeyboardAlone(Gtk::Widget& menuBar) {
    for (auto* heading = menuBar.get_first_child(); heading; heading = heading->get_next_sibling())
        heading->set_focusable(false);
}

void makeAccessible(Gtk::Widget& menuBar) {
    visitDescendants(menuBar.gobj(), [](GtkWidget* widget) {
        if (!GTK_IS_POPOVER_MENU(widget))
            return;
        nameAfterHeading(widget);
        // At each opening, because the toolkit makes new buttons when a menu changes.
        g_signal_connect(widget, "map", G_CALLBACK(+[](GtkWidget* opened, gpointer) {
                             visitDescendants(opened, &exposeShortcutOf);
                         }),
                         nullptr);
    });
}

} // namespace kelo::gtk
