#include "linux/gtk/application/MenuBarExtras.h"

#include "deployment/Deployment.h"
#include "linux/gtk/kit/ActivationToken.h"
#include "linux/gtk/kit/ColorScheme.h"
#include "linux/gtk/kit/SystemImage.h"
#include "linux/tray/IconFiles.h"
#include "linux/tray/TrayItem.h"

#include <glibmm/error.h>

namespace kelo::gtk {

namespace {

// A dark desktop has a dark panel. One that is light, or does not say, may have either: the gray
// stands out from the usual light and dark grays of panels by 3 to 1, from white and black by more.
constexpr std::uint32_t onDark = 0xf2f2f2;
constexpr std::uint32_t onAnything = 0x7f7f7f;

} // namespace

MenuBarExtras::MenuBarExtras(const Glib::RefPtr<Gio::DBus::Connection>& connection,
                             const platform::SceneGraph& scenes, ColorScheme& colorScheme,
                             const Handlers& handlers)
    : colorScheme(colorScheme) {
    if (!connection)
        return;
    for (const auto& scene : scenes)
        if (const auto* extra = std::get_if<platform::MenuBarExtra>(&scene))
            add(connection, *extra, handlers);
    following = colorScheme.signalChanged().connect([this] {
        for (const auto& item : items)
            item->setColor(iconColor());
    });
}

MenuBarExtras::~MenuBarExtras() {
    following.disconnect();
}

void MenuBarExtras::add(const Glib::RefPtr<Gio::DBus::Connection>& connection,
                        const platform::MenuBarExtra& extra, const Handlers& handlers) {
    const auto name = iconName(extra.systemImage);
    const auto files = tray::findIconFiles(name);
    const tray::TrayIcon icon{files.areFound ? name : "", files.themePath, tray::iconMasks(name),
                              iconColor()};
    std::string path = "/StatusNotifierItem";
    if (!items.empty())
        path += "/" + std::to_string(items.size());
    try {
        items.push_back(std::make_unique<tray::TrayItem>(
            connection, path, std::string(deployment::applicationIdentifier), extra, icon,
            tray::TrayItem::Handlers{handlers.openMainWindow, handlers.openSettings,
                                     &keepActivationToken}));
    } catch (const Glib::Error& error) {
        g_warning("The program has no place in the tray: %s", error.what());
        return;
    }
    if (extra.content.observed)
        redrawings.emplace_back(extra.content.observed(),
                                [item = items.back().get()] { item->redraw(); });
}

std::uint32_t MenuBarExtras::iconColor() const {
    return colorScheme.isDark() ? onDark : onAnything;
}

} // namespace kelo::gtk
