#pragma once

#include "linux/tray/ExportedObject.h"

#include <giomm/dbusintrospection.h>

#include <functional>
#include <string>

namespace kelo::fuzz {

/// An object that is exported without a bus: FakeExport.cpp has a definition of its own for the
/// class that exports one, which hands the object's members to the last of these that was made.
struct FakeExport {
    FakeExport();
    ~FakeExport();
    FakeExport(const FakeExport&) = delete;
    FakeExport& operator=(const FakeExport&) = delete;

    tray::ExportedObject::Members members;
    Glib::RefPtr<Gio::DBus::NodeInfo> description;
    /// Told of each signal.
    std::function<void(const std::string&, const tray::ExportedObject::Values&)> heard;
};

} // namespace kelo::fuzz
