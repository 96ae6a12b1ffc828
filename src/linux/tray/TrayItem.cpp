#include "linux/tray/TrayItem.h"

#include "base/async/MainLoop.h"

#include <utility>
#include <variant>

namespace kelo::tray {

TrayItem::TrayItem(const Glib::RefPtr<Gio::DBus::Connection>& connection, const std::string& path,
                   const std::string& identifier, platform::MenuBarExtra extra, TrayIcon icon,
                   Handlers handlers)
    : handlers(std::make_shared<Handlers>(std::move(handlers))),
      menu(connection, path + "/Menu", extra.content.body,
           [this](const platform::MenuEntry& entry) { choose(entry); }),
      item(connection, {path, identifier, extra.title, path + "/Menu"}, std::move(icon),
           [this] { later(this->handlers->activate); }),
      registration(connection, path,
                   [this](Tray tray) { item.offer(tray != Tray::gnome, tray != Tray::lxqt); }) {}

void TrayItem::choose(const platform::MenuEntry& entry) {
    if (const auto* chosen = std::get_if<platform::MenuItem>(&entry))
        later(chosen->action);
    else
        later(handlers->openSettings);
}

void TrayItem::later(std::function<void()> action) {
    // The token is taken now, because the next token belongs to the next click.
    MainLoop::main().post([weak = std::weak_ptr(handlers), action = std::move(action),
                           token = item.takeActivationToken()] {
        const auto handlers = weak.lock();
        if (!handlers)
            return;
        handlers->chosen(token);
        action();
    });
}

} // namespace kelo::tray
