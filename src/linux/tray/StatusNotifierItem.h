#pragma once

#include "linux/tray/ExportedObject.h"
#include "linux/tray/IconPixmaps.h"

#include <functional>
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

    /// Does nothing if the color is the same.
    void setColor(std::uint32_t color);

    /// The activation token that the host sent with the user's click, for the window that the click
    /// raises. Empty if there is none. Each token is returned once.
    std::string takeActivationToken();

    const std::string& path() const { return object.path(); }

private:
    ExportedObject::Members members(std::function<void()> activate);

    Identity identity;
    TrayIcon icon;
    Glib::VariantBase pixmaps; ///< empty until first requested
    std::string activationToken;
    ExportedObject object; ///< last: calls that use the other members may arrive once it exists
};

} // namespace kelo::tray
