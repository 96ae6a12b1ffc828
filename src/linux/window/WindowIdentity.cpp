#include "linux/window/WindowIdentity.h"

#include <glib-object.h>

#include <utility>

namespace kelo::window {

namespace {

using Identity = std::weak_ptr<platform::Window>;

GQuark identityKey() {
    static const GQuark key = g_quark_from_static_string("kelo-window-identity");
    return key;
}

} // namespace

void setWindowIdentity(GtkWindow* window, Identity identity) {
    g_object_set_qdata_full(
        reinterpret_cast<GObject*>(window), identityKey(),
        std::make_unique<Identity>(std::move(identity)).release(),
        [](gpointer data) { const std::unique_ptr<Identity> owned(static_cast<Identity*>(data)); });
}

std::shared_ptr<platform::Window> windowIdentity(GtkWindow* window) {
    const auto* const identity = static_cast<const Identity*>(
        g_object_get_qdata(reinterpret_cast<GObject*>(window), identityKey()));
    return identity ? identity->lock() : nullptr;
}

} // namespace kelo::window
