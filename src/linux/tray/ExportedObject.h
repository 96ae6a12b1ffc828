#pragma once

#include <giomm/dbusconnection.h>
#include <giomm/dbusinterfacevtable.h>

#include <functional>
#include <map>
#include <string>

namespace kelo::tray {

/// An object with one interface on the bus. Destroying it takes the object off the bus. Calls to
/// unknown methods and properties are refused with the standard D-Bus errors. Main thread only.
class ExportedObject {
public:
    using Values = Glib::VariantContainerBase;
    struct Members {
        /// Arguments and results are tuples of the types that the interface describes. A method
        /// that throws a Glib::Error refuses the call with that error.
        std::map<std::string, std::function<Values(const Values&)>> methods;
        /// Values have the types that the interface describes.
        std::map<std::string, std::function<Glib::VariantBase()>> properties;
    };

    /// The description is D-Bus introspection data of one interface. The members must contain every
    /// method and property in it. Throws Glib::Error if the path is taken or the connection is
    /// closed.
    ExportedObject(Glib::RefPtr<Gio::DBus::Connection> connection, std::string path,
                   const char* description, Members members);
    ~ExportedObject();
    ExportedObject(const ExportedObject&) = delete;
    ExportedObject& operator=(const ExportedObject&) = delete;

    /// Broadcasts a signal. Does nothing if the connection is closed.
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
