#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <string>
#include <vector>

namespace kelo::tests {

/// Listens on the accessibility bus, and asks there, as any other program of the user can. What it
/// asks about is in this process, so it never blocks the main loop.
class AccessibilityListener {
public:
    AccessibilityListener();
    ~AccessibilityListener();
    AccessibilityListener(const AccessibilityListener&) = delete;
    AccessibilityListener& operator=(const AccessibilityListener&) = delete;

    struct Event {
        std::string sender;
        std::string path;
        std::string name; ///< "TextChanged", "StateChanged"
        std::string text; ///< the arguments, as GVariant prints them
    };
    std::vector<Event> events;

    /// Asks the object that the event came from. Waits for the reply and prints it; "refused" if
    /// there is none.
    std::string ask(const Event& object, const char* interface, const char* method,
                    GVariant* arguments = nullptr);

private:
    static void heard(GDBusConnection*, const char* sender, const char* path, const char* interface,
                      const char* name, GVariant* arguments, gpointer self);

    gobject::GObjectPointer<GDBusConnection> connection;
    guint subscription = 0;
};

} // namespace kelo::tests
