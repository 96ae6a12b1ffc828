#include "UnansweredPrompter.h"

#include "PrompterInterface.h"

#include "component/ScopedMainLoop.h"

#include <memory>
#include <string_view>

namespace kelo {

namespace {

struct NodeRelease {
    void operator()(GDBusNodeInfo* node) const { g_dbus_node_info_unref(node); }
};

} // namespace

UnansweredPrompter::UnansweredPrompter(GDBusConnection* bus)
    : connection(gobject::GObjectPointer<GDBusConnection>::share(bus)) {
    const std::unique_ptr<GDBusNodeInfo, NodeRelease> node(
        g_dbus_node_info_new_for_xml(prompterInterface, nullptr));
    static const GDBusInterfaceVTable calls{onCall, nullptr, nullptr, {}};
    object = g_dbus_connection_register_object(bus, "/org/gnome/keyring/Prompter",
                                               node->interfaces[0], &calls, this, nullptr, nullptr);
    bool owned = false;
    name = g_bus_own_name_on_connection(
        bus, "org.gnome.keyring.SystemPrompter", G_BUS_NAME_OWNER_FLAGS_NONE,
        [](GDBusConnection*, const gchar*, gpointer flag) { *static_cast<bool*>(flag) = true; },
        nullptr, &owned, nullptr);
    ScopedMainLoop::runUntil([&] { return owned; });
}

UnansweredPrompter::~UnansweredPrompter() {
    g_bus_unown_name(name);
    g_dbus_connection_unregister_object(connection.get(), object);
}

bool UnansweredPrompter::waitUntilAsked() const {
    return ScopedMainLoop::runUntil([this] { return asked; });
}

void UnansweredPrompter::onCall(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                                const gchar* method, GVariant*, GDBusMethodInvocation* invocation,
                                gpointer self) {
    if (std::string_view(method) == "BeginPrompting")
        static_cast<UnansweredPrompter*>(self)->asked = true;
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

} // namespace kelo
