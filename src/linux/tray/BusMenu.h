#pragma once

#include "linux/tray/ExportedObject.h"
#include "linux/tray/MenuEntries.h"
#include "platform/SceneGraph.h"

#include <functional>
#include <string>

namespace kelo::tray {

/// A menu that another program shows (com.canonical.dbusmenu): the tray host reads the entries and
/// reports which one the user chose. We implement the protocol ourselves, because the existing
/// library ignores which entries and properties a host asks for, and may export the menu after the
/// item that refers to it. Main thread only.
class BusMenu {
public:
    /// Computes the menu's content. Called by the constructor, by redraw(), and before a host shows
    /// the menu.
    using Draw = std::function<platform::Menu()>;
    /// Called when the user chose an enabled item or the link to the settings. The host waits until
    /// it returns.
    using Chosen = std::function<void(const platform::MenuEntry& entry)>;

    /// Throws Glib::Error if the menu cannot be exported.
    BusMenu(Glib::RefPtr<Gio::DBus::Connection> connection, std::string path, Draw draw,
            Chosen chosen);

    /// Computes the content again and tells hosts what changed, if anything.
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
    ExportedObject object; ///< last: calls that use the other members may arrive once it exists
};

} // namespace kelo::tray
