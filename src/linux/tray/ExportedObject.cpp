#include "linux/tray/ExportedObject.h"

#include <giomm/dbuserror.h>
#include <giomm/dbusintrospection.h>
#include <giomm/dbusmethodinvocation.h>

#include <utility>

namespace kelo::tray {

namespace {

using Connection = Glib::RefPtr<Gio::DBus::Connection>;
using Invocation = Glib::RefPtr<Gio::DBus::MethodInvocation>;
using Text = Glib::ustring;

} // namespace

ExportedObject::ExportedObject(Connection connection, std::string path, const char* description,
                               Members members)
    : connection(std::move(connection)),
      path_(std::move(path)),
      members(std::move(members)),
      table(
          [this](const Connection&, const Text&, const Text&, const Text&, const Text& method,
                 const Values& arguments, const Invocation& invocation) {
              try {
                  invocation->return_value(this->members.methods.at(method)(arguments));
              } catch (const Glib::Error& refusal) {
                  invocation->return_error(refusal);
              }
          },
          [this](Glib::VariantBase& value, const Connection&, const Text&, const Text&, const Text&,
                 const Text& property) { value = this->members.properties.at(property)(); }) {
    const auto node = Gio::DBus::NodeInfo::create_for_xml(description);
    const auto interface = Glib::wrap(node->gobj()->interfaces[0], true);
    interfaceName = node->gobj()->interfaces[0]->name;
    registration = this->connection->register_object(path_, interface, table);
}

ExportedObject::~ExportedObject() {
    connection->unregister_object(registration);
}

void ExportedObject::emit(const std::string& signal, const Values& values) const {
    try {
        connection->emit_signal(path_, interfaceName, signal, {}, values);
    } catch (const Glib::Error& error) {
        g_debug("The signal %s was not sent: %s", signal.c_str(), error.what());
    }
}

} // namespace kelo::tray
