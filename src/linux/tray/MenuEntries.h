#pragma once

#include "platform/SceneGraph.h"

#include <glibmm/ustring.h>
#include <glibmm/variant.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace kelo::tray {

/// What a host of trays is told about one entry. Only what differs from the protocol's defaults is
/// in it.
using EntryProperties = std::map<Glib::ustring, Glib::VariantBase>;

/// A menu as hosts of trays know it: entries that are called by numbers.
class MenuEntries {
public:
    struct Entry {
        /// From 1 upwards; keeps naming this entry, and names no other after it has gone.
        std::int32_t identifier = 0;
        platform::Menu::value_type content;
        EntryProperties properties;
    };

    /// What hosts have to be told after an update.
    struct Change {
        bool layout = false; ///< entries came, went or changed places; nothing else then matters
        std::vector<std::pair<std::int32_t, EntryProperties>> updated;
        std::vector<std::pair<std::int32_t, std::vector<Glib::ustring>>> removed;

        bool isEmpty() const { return !layout && updated.empty() && removed.empty(); }
    };

    Change update(const platform::Menu& menu);

    const std::vector<Entry>& all() const { return entries; }
    /// Null when there is none of that number.
    const Entry* find(std::int32_t identifier) const;

private:
    std::vector<Entry> withIdentifiers(const platform::Menu& menu);

    std::vector<Entry> entries;
    std::int32_t nextIdentifier = 1;
};

} // namespace kelo::tray
