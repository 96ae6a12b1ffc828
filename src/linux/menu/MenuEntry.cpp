#include "linux/menu/MenuEntry.h"

#include <variant>

namespace kelo::menu {

const std::string* labelOf(const platform::MenuEntry& entry) {
    if (const auto* item = std::get_if<platform::MenuItem>(&entry))
        return &item->label;
    if (const auto* link = std::get_if<platform::SettingsLink>(&entry))
        return &link->label;
    return nullptr;
}

bool canBeChosen(const platform::MenuEntry& entry) {
    const auto* item = std::get_if<platform::MenuItem>(&entry);
    return item ? item->enabled : std::holds_alternative<platform::SettingsLink>(entry);
}

std::string withoutMnemonics(const std::string& text) {
    std::string result;
    for (const char character : text) {
        if (character == '_')
            result += '_';
        result += character;
    }
    return result;
}

} // namespace kelo::menu
