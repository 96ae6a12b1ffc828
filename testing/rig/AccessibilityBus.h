#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::rig {

struct VariantDeleter {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using VariantPointer = std::unique_ptr<GVariant, VariantDeleter>;

/// Where an accessible object lives: the bus name of its process and its object path there.
struct ObjectAddress {
    std::string busName;
    std::string path;
    /// Whether the object belongs to a web page, not to a window of the toolkit.
    bool inPage = false;
    bool operator==(const ObjectAddress&) const = default;
};

/// The accessibility bus of this desktop session. Opening it makes the toolkits send events, as
/// they do for a screen reader. Main thread only.
class AccessibilityBus {
public:
    /// Throws std::runtime_error when there is no session bus or no accessibility bus on it.
    AccessibilityBus();
    ~AccessibilityBus();
    AccessibilityBus(const AccessibilityBus&) = delete;
    AccessibilityBus& operator=(const AccessibilityBus&) = delete;

    /// Where toolkits find it, by AT_SPI_BUS_ADDRESS.
    const std::string& address() const { return address_; }

    /// Calls a method and waits a few seconds for the reply; null if the object is gone or refuses.
    VariantPointer call(const ObjectAddress& object, const char* interface, const char* method,
                        GVariant* arguments = nullptr) const;
    /// The value of a property; null if the object is gone or has no such property.
    VariantPointer property(const ObjectAddress& object, const char* interface,
                            const char* name) const;

    /// The roots of all registered programs: their native windows.
    std::vector<ObjectAddress> applications() const;
    /// The roots of the web pages. They are not linked below the window that shows them: a
    /// sandboxed web process puts its tree on the bus by itself.
    std::vector<ObjectAddress> pages() const;

    /// What programs have asked screen readers to say, in order.
    const std::vector<std::string>& announcements() const { return announced; }

    /// Evaluates the condition now and after every event on the bus until it holds; false when the
    /// deadline passed first. Also evaluates it every `interval`, for changes without an event.
    bool await(const std::function<bool()>& condition, std::chrono::seconds deadline,
               std::chrono::milliseconds interval = std::chrono::milliseconds(100)) const;

private:
    std::vector<std::string> names() const;
    static void heard(GDBusConnection* connection, const char* sender, const char* path,
                      const char* interface, const char* signal, GVariant* arguments,
                      gpointer self);

    mutable std::vector<std::string> announced;
    std::string address_;
    gobject::GObjectPointer<GDBusConnection> connection;
    guint subscription = 0;
};

} // namespace kelo::rig
