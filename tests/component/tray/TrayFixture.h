#pragma once

#include "linux/gobject/GLibMainLoop.h"
#include "linux/tray/ExportedObject.h"
#include "linux/tray/TrayItem.h"

#include <giomm/dbusconnection.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::tests {

/// A session bus with two clients: our program, and another one that reads our item as a tray does.
/// Both run in this process's main loop.
class TrayFixture {
public:
    TrayFixture();
    ~TrayFixture();

    struct Answer {
        std::string text;  ///< the results, as GVariant text
        std::string error; ///< the bus's name of it; empty for success
        Glib::VariantContainerBase values;
    };
    /// Calls our program from the other client and waits for the reply. The arguments are a tuple
    /// in GVariant text.
    Answer call(const std::string& path, const std::string& interface, const std::string& method,
                const std::string& arguments);
    Answer menu(const std::string& method, const std::string& arguments);
    Answer item(const std::string& method, const std::string& arguments);

    /// Runs the main loop until the condition holds. Throws after a generous deadline.
    static void until(const std::string& what, const std::function<bool()>& condition);
    /// Returns when the other client has received everything that our program sent so far.
    void settle();
    /// The signals that the other client received so far, each as its name and GVariant text.
    std::vector<std::string> signals;

    gobject::GLibMainLoop mainLoop;
    MainLoop::Installation installation{mainLoop};
    Glib::RefPtr<Gio::DBus::Connection> ours;
    Glib::RefPtr<Gio::DBus::Connection> theirs;
    std::vector<std::string> events; ///< "token T", "open", "activate", …

    /// The program's menu; a test may change it and redraw.
    platform::Menu content;
    tray::TrayIcon icon{"kelo-brain-symbolic", "", {{1, {255}}}, 0x112233};
    void show();
    std::unique_ptr<tray::TrayItem> shown;

private:
    void note(const std::string& event) { events.push_back(event); }
    guint subscription = 0;
};

/// A StatusNotifierWatcher. It reads each item as soon as the item registers.
class FakeWatcher {
public:
    /// others: names that it owns as well.
    explicit FakeWatcher(TrayFixture& tray, std::vector<std::string> others = {});
    ~FakeWatcher();

    std::vector<std::string> registered;  ///< the arguments
    std::vector<std::string> identifiers; ///< the items' Id, as they answered
    int layouts = 0;                      ///< menus that answered

private:
    void look(const std::string& path);

    TrayFixture& tray;
    tray::ExportedObject object;
    std::vector<std::string> names;
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
};

} // namespace kelo::tests
