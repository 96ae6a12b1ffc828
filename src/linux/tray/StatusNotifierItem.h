#pragma once

#include "linux/tray/ExportedObject.h"
#include "linux/tray/IconPixmaps.h"

#include <functional>
#include <string>
#include <vector>

namespace kelo::tray {

/// How the item looks.
struct TrayIcon {
    /// In the icon theme; empty when the icon's file is not where a theme could find it.
    std::string name;
    /// A folder with icon themes where hosts look first; empty for none.
    std::string themePath;
    /// Drawn by hosts that do not find the name.
    std::vector<IconMask> masks;
    std::uint32_t color = 0; ///< of the masks, 0xRRGGBB
};

/// The item in the tray (org.kde.StatusNotifierItem): always shown, always the same but for the
/// color of its icon. Main thread only.
class StatusNotifierItem {
public:
    struct Identity {
        std::string path;
        std::string identifier; ///< stays the same from start to start
        std::string title;
        std::string menuPath;
    };

    /// activate is run when the user asks for the program itself, not for its menu; inside the
    /// host's call, which waits for the answer. Throws Glib::Error when it cannot be exported.
    StatusNotifierItem(Glib::RefPtr<Gio::DBus::Connection> connection, Identity identity,
                       TrayIcon icon, std::function<void()> activate);

    /// Does nothing when the color stays.
    void setColor(std::uint32_t color);

    /// What the host gave along for the window that the user's click is going to raise; empty when
    /// it gave nothing. To be had once.
    std::string takeActivationToken();

    const std::string& path() const { return object.path(); }

private:
    ExportedObject::Members members(std::function<void()> activate);

    Identity identity;
    TrayIcon icon;
    Glib::VariantBase pixmaps; ///< empty until asked for
    std::string activationToken;
    ExportedObject object; ///< last: from then on it is asked for the rest
};

} // namespace kelo::tray
