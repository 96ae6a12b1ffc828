#include "linux/tray/MenuEntries.h"

#include "linux/menu/MenuEntry.h"

#include <algorithm>
#include <string>
#include <variant>

namespace kelo::tray {

namespace {

using Content = platform::MenuEntry;
using menu::labelOf;
using Text = Glib::ustring;

/// A shortcut as the protocol has it: a list of key strokes, each a list of keys. Ours have one.
Glib::VariantBase keysOf(const platform::KeyboardShortcut& shortcut) {
    std::vector<Text> keys;
    if (shortcut.modifier == platform::KeyModifier::command)
        keys.emplace_back("Control");
    keys.emplace_back(shortcut.key);
    return Glib::Variant<std::vector<std::vector<Text>>>::create({keys});
}

EntryProperties propertiesOf(const Content& content) {
    EntryProperties properties;
    const auto* label = labelOf(content);
    if (!label) {
        properties["type"] = Glib::Variant<Text>::create("separator");
        return properties;
    }
    properties["label"] = Glib::Variant<Text>::create(menu::withoutMnemonics(*label));
    if (const auto* item = std::get_if<platform::MenuItem>(&content)) {
        if (!item->enabled)
            properties["enabled"] = Glib::Variant<bool>::create(false);
        if (item->shortcut)
            properties["shortcut"] = keysOf(*item->shortcut);
    }
    return properties;
}

bool areOfSameKind(const Content& one, const Content& other) {
    return one.index() == other.index();
}

bool areTheSame(const Content& one, const Content& other) {
    const auto* label = labelOf(one);
    const auto* otherLabel = labelOf(other);
    return areOfSameKind(one, other) && (!label || *label == *otherLabel);
}

} // namespace

MenuEntries::Change MenuEntries::update(const platform::Menu& menu) {
    const auto old = std::exchange(entries, withIdentifiers(menu));
    Change change;
    change.layout = !std::equal(
        entries.begin(), entries.end(), old.begin(), old.end(),
        [](const Entry& one, const Entry& other) { return one.identifier == other.identifier; });
    if (change.layout)
        return change;
    for (std::size_t index = 0; index < entries.size(); ++index) {
        EntryProperties updated;
        for (const auto& [name, value] : entries[index].properties) {
            const auto before = old[index].properties.find(name);
            if (before == old[index].properties.end() || !before->second.equal(value))
                updated[name] = value;
        }
        std::vector<Text> removed;
        for (const auto& [name, value] : old[index].properties)
            if (!entries[index].properties.contains(name))
                removed.push_back(name);
        if (!updated.empty())
            change.updated.emplace_back(entries[index].identifier, updated);
        if (!removed.empty())
            change.removed.emplace_back(entries[index].identifier, removed);
    }
    return change;
}

std::vector<MenuEntries::Entry> MenuEntries::withIdentifiers(const platform::Menu& menu) {
    // If the kinds of the entries are as before, entries keep their identifiers even when their
    // labels changed. Otherwise an entry keeps its identifier only if its label is the same.
    const bool hasSameStructure =
        std::equal(menu.begin(), menu.end(), entries.begin(), entries.end(),
                   [](const Content& content, const Entry& entry) {
                       return areOfSameKind(content, entry.content);
                   });
    std::vector<Entry> result;
    auto rest = entries.cbegin();
    for (const auto& content : menu) {
        const auto known = std::find_if(rest, entries.cend(), [&](const Entry& entry) {
            return hasSameStructure || areTheSame(entry.content, content);
        });
        const bool isKnown = known != entries.cend();
        result.push_back(
            {isKnown ? known->identifier : nextIdentifier++, content, propertiesOf(content)});
        if (isKnown)
            rest = std::next(known);
    }
    return result;
}

const MenuEntries::Entry* MenuEntries::find(std::int32_t identifier) const {
    const auto found =
        std::find_if(entries.begin(), entries.end(),
                     [identifier](const Entry& entry) { return entry.identifier == identifier; });
    return found == entries.end() ? nullptr : &*found;
}

} // namespace kelo::tray
