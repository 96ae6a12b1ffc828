#include "linux/gtk/main/MenuBar.h"

#include "linux/gtk/kit/Program.h"

#include <utility>

namespace kelo::gtk {

namespace {

/// Menu models read an underscore as the mark of a mnemonic; our texts are shown as they stand.
std::string withoutMnemonics(const std::string& text) {
    std::string result;
    for (const char character : text) {
        if (character == '_')
            result += '_';
        result += character;
    }
    return result;
}

/// What of an entry a menu model shows by itself; whether it can be chosen, its action tells.
std::string labelOf(const std::variant<platform::MenuItem, platform::MenuSeparator,
                                       platform::SettingsLink>& entry) {
    if (const auto* item = std::get_if<platform::MenuItem>(&entry))
        return "item " + item->label;
    if (const auto* link = std::get_if<platform::SettingsLink>(&entry))
        return "settings " + link->label;
    return "separator";
}

} // namespace

CommandMenuModel::CommandMenuModel(Gio::ActionMap& actions, std::string actionPrefix,
                                   platform::CommandMenu menu)
    : actionMap(actions), actionPrefix(std::move(actionPrefix)), menu(std::move(menu)) {
    draw();
    if (this->menu.items.observed)
        redrawing.emplace(this->menu.items.observed(), [this] { draw(); });
}

void CommandMenuModel::draw() {
    items = menu.items.body();
    std::vector<std::string> labels;
    for (const auto& entry : items)
        labels.push_back(labelOf(entry));
    // An open menu closes when its model is rebuilt, so leave it alone where only actions changed.
    if (std::exchange(drawnLabels, labels) != labels)
        rebuild();
    for (std::size_t index = 0; index < items.size(); ++index)
        if (const auto* item = std::get_if<platform::MenuItem>(&items[index]))
            actionFor(index)->set_enabled(item->enabled);
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
        if (const auto* item = std::get_if<platform::MenuItem>(&items[index]))
            section->append(withoutMnemonics(item->label), "app." + actionFor(index)->get_name());
        else if (const auto* link = std::get_if<platform::SettingsLink>(&items[index]))
            section->append(withoutMnemonics(link->label), "app.preferences");
        else
            finishSection();
    }
    finishSection();
}

Glib::RefPtr<Gio::SimpleAction> CommandMenuModel::actionFor(std::size_t index) {
    while (actions.size() <= index) {
        const std::size_t number = actions.size();
        auto action = Gio::SimpleAction::create(actionPrefix + std::to_string(number));
        action->signal_activate().connect([this, number](const Glib::VariantBase&) {
            const auto* item =
                number < items.size() ? std::get_if<platform::MenuItem>(&items[number]) : nullptr;
            if (!item || !item->enabled)
                return;
            if (const auto chosen = item->action)
                chosen();
        });
        actionMap.add_action(action);
        actions.push_back(action);
    }
    return actions[index];
}

MenuBar::MenuBar(Gio::ActionMap& actions, const std::vector<platform::CommandMenu>& commandMenus,
                 bool hasSettings) {
    auto program = Gio::Menu::create();
    if (hasSettings) {
        auto settings = Gio::Menu::create();
        settings->append("Settings…", "app.preferences");
        program->append_section({}, settings);
    }
    auto end = Gio::Menu::create();
    end->append("Close Window", "win.close");
    end->append("Quit", "app.quit");
    program->append_section({}, end);
    model_->append_submenu(programName, program);

    for (std::size_t index = 0; index < commandMenus.size(); ++index) {
        menus.push_back(std::make_unique<CommandMenuModel>(
            actions, "command-" + std::to_string(index) + "-", commandMenus[index]));
        model_->append_submenu(withoutMnemonics(menus.back()->title()), menus.back()->model());
    }
}

} // namespace kelo::gtk
