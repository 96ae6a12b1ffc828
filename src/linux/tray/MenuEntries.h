#pragma once

#include "platform/SceneGraph.h"

#include <glibmm/ustring.h>
#include <glibmm/variant.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace kelo::tray {

/// The properties of one entry that a tray host can read. Properties with the protocol's default
/// value are left out.
using EntryProperties = std::map<Glib::ustring, Glib::VariantBase>;

/// A menu as tray hosts see it: entries with numeric identifiers.
class MenuEntries {
public:
    struct Entry {
        /// At least 1. Stays with this entry, and is not used again after the entry is gone.
        std::int32_t identifier = 0;
        platform::MenuEntry content;
        EntryProperties properties;
    };

    /// What an update changed, for the signals to the hosts.
    struct Change {
        /// Entries were added, removed or moved. The other members are then empty.
        bool layout = false;
        std::vector<std::pair<std::int32_t, EntryProperties>> updated;
        std::vector<std::pair<std::int32_t, std::vector<Glib::ustring>>> removed;

        bool isEmpty() const { return !layout && updated.empty() && removed.empty(); }
    };

    Change update(const platform::Menu& menu);

    const std::vector<Entry>& all() const { return entries; }
    /// Null if no entry has the identifier.
    const Entry* find(std::int32_t identifier) const;

private:
    std::vector<Entry> withIdentifiers(const platform::Menu& menu);

    std::vector<Entry> entries;
    std::int32_t nextIdentifier = 1;
};

} // namespace kelo::tray
