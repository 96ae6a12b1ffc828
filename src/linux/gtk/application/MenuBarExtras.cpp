#include "linux/gtk/application/MenuBarExtras.h"

#include "deployment/Deployment.h"
#include "linux/gtk/kit/ColorScheme.h"
#include "linux/gtk/kit/Style.h"
#include "linux/gtk/kit/WindowPresentation.h"
#include "linux/tray/IconFiles.h"
#include "linux/tray/TrayItem.h"

#include <glibmm/error.h>

#include <string>
#include <utility>

namespace kelo::gtk {

namespace {

// A dark desktop has a dark panel. A light desktop, or one that does not report its scheme, may
// have a light or a dark panel. The gray has a contrast of at least 3 to 1 against the usual grays
// of panels.
constexpr std::uint32_t onDark = 0xf2f2f2;
constexpr std::uint32_t onEitherScheme = 0x7f7f7f;

void chosenInTray(std::string token) {
    noteUserRequest();
    if (!token.empty())
        keepActivationToken(std::move(token));
}

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
    colorScheme.signalChanged().connect(sigc::mem_fun(*this, &MenuBarExtras::updateColor));
}

MenuBarExtras::~MenuBarExtras() = default;

void MenuBarExtras::updateColor() {
    for (const auto& item : items)
        item->setColor(iconColor());
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
                                     &chosenInTray}));
    } catch (const Glib::Error& error) {
        g_warning("The item for the tray cannot be exported: %s", error.what());
        return;
    }
    if (extra.content.observed)
        redrawings.emplace_back(extra.content.observed(),
                                [item = items.back().get()] { item->redraw(); });
}

std::uint32_t MenuBarExtras::iconColor() const {
    return colorScheme.isDark() ? onDark : onEitherScheme;
}

} // namespace kelo::gtk
