#pragma once

#include <giomm/dbusconnection.h>
#include <giomm/dbusinterfacevtable.h>

#include <functional>
#include <map>
#include <string>

namespace kelo::tray {

/// An object with one interface that other programs find on the bus until this goes. Calls and
/// questions for what the interface does not name are refused as the bus prescribes. Main thread
/// only.
class ExportedObject {
public:
    using Values = Glib::VariantContainerBase;
    struct Members {
        /// Get the arguments and give the results, both as tuples of the types that the interface
        /// describes. What throws a Glib::Error refuses the call with it.
        std::map<std::string, std::function<Values(const Values&)>> methods;
        /// Of the type that the interface describes.
        std::map<std::string, std::function<Glib::VariantBase()>> properties;
    };

    /// The description is D-Bus introspection data of one interface; every method and property in
    /// it must be among the members. Throws Glib::Error when the path is taken or the connection
    /// closed.
    ExportedObject(Glib::RefPtr<Gio::DBus::Connection> connection, std::string path,
                   const char* description, Members members);
    ~ExportedObject();
    ExportedObject(const ExportedObject&) = delete;
    ExportedObject& operator=(const ExportedObject&) = delete;

    /// Sent to everybody who listens; lost without notice when the connection is closed.
    void emit(const std::string& signal, const Values& values = {}) const;

    const std::string& path() const { return path_; }

private:
    Glib::RefPtr<Gio::DBus::Connection> connection;
    std::string path_;
    std::string interfaceName;
    Members members;
    Gio::DBus::InterfaceVTable table;
    guint registration = 0;
};

} // namespace kelo::tray
