#pragma once

#include "linux/tray/ExportedObject.h"
#include "linux/tray/IconPixmaps.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelo::tray {

/// The icon of an item.
struct TrayIcon {
    /// Name in the icon theme; empty if no icon theme contains the file.
    std::string name;
    /// A folder with icon themes where hosts look first; empty if there is none.
    std::string themePath;
    /// For hosts that do not find the name.
    std::vector<IconMask> masks;
    std::uint32_t color = 0; ///< of the masks, 0xRRGGBB
};

/// The item in the tray (org.kde.StatusNotifierItem). It is always shown, and only the color of its
/// icon ever changes. Main thread only.
class StatusNotifierItem {
public:
    struct Identity {
        std::string path;
        std::string identifier; ///< the same in every process of the program
        std::string title;
        std::string menuPath;
    };

    /// activate is called when the user chooses the item itself instead of its menu. The host waits
    /// until it returns. Throws Glib::Error if the item cannot be exported.
    StatusNotifierItem(Glib::RefPtr<Gio::DBus::Connection> connection, Identity identity,
                       TrayIcon icon, std::function<void()> activate);

    /// Whether the item itself can be chosen, beside its menu, and whether the icon has a name, or
    /// pixels only. At first it has both. Hosts learn of a change when the item is registered
    /// again.
    void offer(bool activation, bool iconName);

    /// Does nothing if the color is the same.
    void setColor(std::uint32_t color);

    /// The activation token that the host sent with the user's click, for the window that the click
    /// raises. Empty if there is none. Each token is returned once.
    std::string takeActivationToken();

    const std::string& path() const { return identity.path; }

private:
    void exportObject();
    ExportedObject::Members members();

    Glib::RefPtr<Gio::DBus::Connection> connection;

    Identity identity;
    TrayIcon icon;
    Glib::VariantBase pixmaps; ///< empty until first requested
    std::string activationToken;
    std::function<void()> activate;
    bool isActivationOffered = true;
    bool isIconNamed = true;
    /// Never empty; last: calls that use the other members may arrive once it exists.
    std::optional<ExportedObject> object;
};

} // namespace kelo::tray
