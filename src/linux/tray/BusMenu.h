#pragma once

#include "linux/tray/ExportedObject.h"
#include "linux/tray/MenuEntries.h"
#include "platform/SceneGraph.h"

#include <functional>
#include <string>

namespace kelo::tray {

/// A menu that another program shows (com.canonical.dbusmenu): the host of the tray asks for its
/// entries and tells what was chosen. Of our own making, because the one library that serves this
/// interface ignores which entries and properties a host asks for, and exports the menu at a time
/// of its own, perhaps after the item that refers to it. Main thread only.
class BusMenu {
public:
    /// Computes the menu's content; run when the menu is made, at every redraw(), and before a host
    /// shows it.
    using Draw = std::function<platform::Menu()>;
    /// An entry that can be chosen was: an item that is enabled, or the link to the settings. Run
    /// inside the host's call, which waits for the answer.
    using Chosen = std::function<void(const platform::Menu::value_type& entry)>;

    /// Throws Glib::Error when it cannot be exported.
    BusMenu(Glib::RefPtr<Gio::DBus::Connection> connection, std::string path, Draw draw,
            Chosen chosen);

    /// Tells hosts what has changed, if anything.
    void redraw() { update(); }

    const std::string& path() const { return object.path(); }

private:
    using Values = ExportedObject::Values;

    ExportedObject::Members members();
    Values layout(const Values& arguments) const;
    Values groupProperties(const Values& arguments) const;
    Values property(const Values& arguments) const;
    Values event(const Values& arguments);
    Values eventGroup(const Values& arguments);
    Values aboutToShow(const Values& arguments);
    Values aboutToShowGroup(const Values& arguments);

    bool isKnown(std::int32_t identifier) const;
    void requireKnown(std::int32_t identifier) const;
    void happened(std::int32_t identifier, const Glib::ustring& event);
    bool update();

    Draw draw;
    Chosen chosen;
    MenuEntries entries;
    std::uint32_t revision = 1;
    ExportedObject object; ///< last: from then on it is asked for the rest
};

} // namespace kelo::tray
