#include "FakeExport.h"

#include <utility>

namespace kelo::fuzz {

namespace {

FakeExport* current = nullptr;

} // namespace

FakeExport::FakeExport() {
    current = this;
}

FakeExport::~FakeExport() {
    current = nullptr;
}

} // namespace kelo::fuzz

namespace kelo::tray {

ExportedObject::ExportedObject(Glib::RefPtr<Gio::DBus::Connection>, std::string path,
                               const char* description, Members members)
    : path_(std::move(path)), table({}, {}) {
    // Always the same text, and slow to read.
    static const auto parsed = Gio::DBus::NodeInfo::create_for_xml(description);
    fuzz::current->description = parsed;
    fuzz::current->members = std::move(members);
}

ExportedObject::~ExportedObject() {
    registration = 0;
}

void ExportedObject::emit(const std::string& signal, const Values& values) const {
    fuzz::current->heard(signal, values);
}

} // namespace kelo::tray
