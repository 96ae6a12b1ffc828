#include "linux/update/DesktopNetwork.h"

#include "linux/gobject/GObjectPointer.h"

#include <gtest/gtest.h>

namespace kelo::test {

namespace {

/// A network monitor that says what a test wants.
struct ScriptedMonitor {
    GObject parent;
    gboolean available;
    gboolean metered;
};

enum Property { propertyAvailable = 1, propertyMetered, propertyConnectivity };

void getProperty(GObject* object, guint property, GValue* value, GParamSpec*) {
    const auto* monitor = reinterpret_cast<ScriptedMonitor*>(object);
    if (property == propertyAvailable)
        g_value_set_boolean(value, monitor->available);
    else if (property == propertyMetered)
        g_value_set_boolean(value, monitor->metered);
    else
        g_value_set_enum(value, G_NETWORK_CONNECTIVITY_FULL);
}

void initializeClass(gpointer instanceClass, gpointer) {
    auto* type = static_cast<GObjectClass*>(instanceClass);
    type->get_property = getProperty;
    g_object_class_override_property(type, propertyAvailable, "network-available");
    g_object_class_override_property(type, propertyMetered, "network-metered");
    g_object_class_override_property(type, propertyConnectivity, "connectivity");
}

GType scriptedMonitorType() {
    static const GType type = [] {
        const GType made = g_type_register_static_simple(
            G_TYPE_OBJECT, "KeloScriptedMonitor", sizeof(GObjectClass), initializeClass,
            sizeof(ScriptedMonitor), nullptr, static_cast<GTypeFlags>(0));
        const GInterfaceInfo nothing{};
        g_type_add_interface_static(made, G_TYPE_INITABLE, &nothing);
        g_type_add_interface_static(made, G_TYPE_NETWORK_MONITOR, &nothing);
        return made;
    }();
    return type;
}

class DesktopNetwork : public testing::Test {
protected:
    void becomes(bool available) const {
        monitor.get()->available = available;
        g_signal_emit_by_name(monitor.get(), "network-changed", available);
    }

    const gobject::GObjectPointer<ScriptedMonitor> monitor =
        gobject::GObjectPointer<ScriptedMonitor>::adopt(
            reinterpret_cast<ScriptedMonitor*>(g_object_new(scriptedMonitorType(), nullptr)));
    update::DesktopNetwork network{reinterpret_cast<GNetworkMonitor*>(monitor.get())};
    int times = 0;
};

} // namespace

TEST_F(DesktopNetwork, IsMeteredWhenTheDesktopSaysSo) {
    EXPECT_FALSE(network.isMetered());
    monitor.get()->metered = true;
    EXPECT_TRUE(network.isMetered());
}

TEST_F(DesktopNetwork, TellsOnceOfEachTimeThatItCame) {
    network.whenAvailable([this] { ++times; });
    becomes(false);
    EXPECT_EQ(times, 0);
    becomes(true);
    becomes(true); // another address
    EXPECT_EQ(times, 1);
    becomes(false);
    becomes(true);
    EXPECT_EQ(times, 2);
    network.whenAvailable(nullptr);
    becomes(false);
    becomes(true);
    EXPECT_EQ(times, 2);
}

} // namespace kelo::test
