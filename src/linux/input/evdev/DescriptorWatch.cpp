#include "linux/input/evdev/DescriptorWatch.h"

#include <glib-unix.h>

#include <memory>
#include <utility>

namespace kelo::input {

DescriptorWatch::DescriptorWatch(int descriptor, std::function<void()> ready)
    : source(g_unix_fd_source_new(descriptor,
                                  static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR))) {
    using Ready = std::function<void()>;
    const GUnixFDSourceFunc dispatch = [](gint, GIOCondition, gpointer data) -> gboolean {
        (*static_cast<Ready*>(data))();
        return G_SOURCE_CONTINUE;
    };
    // GLib keeps the data until a dispatch under way has returned.
    const GDestroyNotify drop = [](gpointer data) {
        std::unique_ptr<Ready>(static_cast<Ready*>(data));
    };
    g_source_set_callback(source, G_SOURCE_FUNC(dispatch),
                          std::make_unique<Ready>(std::move(ready)).release(), drop);
    g_source_attach(source, nullptr);
}

DescriptorWatch::~DescriptorWatch() {
    g_source_destroy(source);
    g_source_unref(source);
}

} // namespace kelo::input
