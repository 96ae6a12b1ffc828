#include "component/session/StandInServices.h"

#include <utility>

namespace kelo::test {

namespace {

constexpr const char* managerDescription = R"(<node>
<interface name='org.freedesktop.login1.Manager'>
<method name='GetSession'><arg type='s' direction='in'/><arg type='o' direction='out'/></method>
</interface></node>)";
// The properties' own interface is served by hand, so that a test can be silent about a change.
constexpr const char* propertiesDescription =
    R"(<node><interface name='org.freedesktop.DBus.Properties'>
<method name='GetAll'><arg type='s' direction='in'/><arg type='a{sv}' direction='out'/></method>
</interface></node>)";
constexpr const char* session = "/org/freedesktop/login1/session/_37";
constexpr const char* somebodyElses = "/org/freedesktop/login1/session/_38";
constexpr const char* sessionInterface = "org.freedesktop.login1.Session";

GVariant* change(const char* property, bool value) {
    GVariantBuilder changed;
    g_variant_builder_init(&changed, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&changed, "{sv}", property, g_variant_new_boolean(value));
    return g_variant_new("(sa{sv}as)", sessionInterface, &changed, nullptr);
}

} // namespace

StandInService::StandInService(const SessionBus& bus, const char* name)
    : name(name),
      connection(gobject::GObjectPointer<GDBusConnection>::share(bus.connection())),
      ownership(g_bus_own_name_on_connection(bus.connection(), name, G_BUS_NAME_OWNER_FLAGS_NONE,
                                             nullptr, nullptr, nullptr, nullptr)) {}

StandInService::~StandInService() {
    for (const guint object : objects)
        g_dbus_connection_unregister_object(connection.get(), object);
    giveUpName();
    for (const Question& question : unanswered)
        g_object_unref(question.invocation);
}

void StandInService::giveUpName() {
    if (ownership)
        g_bus_unown_name(std::exchange(ownership, 0));
}

void StandInService::answerLate() {
    for (const Question& question : std::exchange(unanswered, {}))
        reply(question);
}

void StandInService::serve(const char* path, const char* description) {
    static const GDBusInterfaceVTable methods{called, nullptr, nullptr, {}};
    GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(description, nullptr);
    objects.push_back(g_dbus_connection_register_object(connection.get(), path, node->interfaces[0],
                                                        &methods, this, nullptr, nullptr));
    g_dbus_node_info_unref(node);
}

void StandInService::send(const char* path, const char* interface, const char* signal,
                          GVariant* values) const {
    g_dbus_connection_emit_signal(connection.get(), nullptr, path, interface, signal, values,
                                  nullptr);
}

void StandInService::called(GDBusConnection*, const char*, const char*, const char*,
                            const char* method, GVariant* arguments,
                            GDBusMethodInvocation* invocation, gpointer data) {
    auto& self = *static_cast<StandInService*>(data);
    ++self.questions;
    Question question{method, gobject::GVariantPointer(g_variant_ref(arguments)), invocation};
    if (self.isSilent)
        self.unanswered.push_back(std::move(question));
    else
        self.reply(question);
}

void StandInService::reply(const Question& question) {
    if (GVariant* const values = answer(question.method, question.arguments.get()))
        g_dbus_method_invocation_return_value(question.invocation, values);
    else
        g_dbus_method_invocation_return_dbus_error(question.invocation, "org.example.No", "no");
}

StandInLoginManager::StandInLoginManager(const SessionBus& bus)
    : StandInService(bus, "org.freedesktop.login1") {
    serve("/org/freedesktop/login1", managerDescription);
    serve(session, propertiesDescription);
}

void StandInLoginManager::set(const char* property, bool value, bool isTold) {
    properties[property] = value;
    if (isTold)
        send(session, "org.freedesktop.DBus.Properties", "PropertiesChanged",
             change(property, value));
}

void StandInLoginManager::invalidate(const char* property) const {
    GVariantBuilder names;
    g_variant_builder_init(&names, G_VARIANT_TYPE("as"));
    g_variant_builder_add(&names, "s", property);
    send(session, "org.freedesktop.DBus.Properties", "PropertiesChanged",
         g_variant_new("(sa{sv}as)", sessionInterface, nullptr, &names));
}

void StandInLoginManager::changeSomebodyElses(const char* property, bool value) const {
    send(somebodyElses, "org.freedesktop.DBus.Properties", "PropertiesChanged",
         change(property, value));
}

void StandInLoginManager::prepareForSleep(bool begins) const {
    send("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
         g_variant_new("(b)", begins));
}

GVariant* StandInLoginManager::answer(const std::string& method, GVariant* arguments) {
    if (method == "GetSession") {
        const char* asked = nullptr;
        g_variant_get(arguments, "(&s)", &asked);
        return hasSession && asked == std::string("auto") ? g_variant_new("(o)", session) : nullptr;
    }
    GVariantBuilder all;
    g_variant_builder_init(&all, G_VARIANT_TYPE("a{sv}"));
    for (const auto& [name, value] : properties)
        g_variant_builder_add(&all, "{sv}", name.c_str(), g_variant_new_boolean(value));
    if (seat)
        g_variant_builder_add(
            &all, "{sv}", "Seat",
            g_variant_new("(so)", seat->c_str(), "/org/freedesktop/login1/seat/x"));
    return g_variant_new("(a{sv})", &all);
}

StandInScreenSaver::StandInScreenSaver(const SessionBus& bus, const char* name, const char* path)
    : StandInService(bus, name), interface(name), path(path) {
    const std::string description =
        "<node><interface name='" + std::string(name) +
        "'><method name='GetActive'><arg type='b' direction='out'/></method></interface></node>";
    serve(path, description.c_str());
}

void StandInScreenSaver::set(bool isActive) {
    setFrom(path, isActive);
}

void StandInScreenSaver::setFrom(const char* object, bool isActive) {
    active = isActive;
    send(object, interface, "ActiveChanged", g_variant_new("(b)", isActive));
}

GVariant* StandInScreenSaver::answer(const std::string&, GVariant*) {
    return knowsIt ? g_variant_new("(b)", active) : nullptr;
}

} // namespace kelo::test
