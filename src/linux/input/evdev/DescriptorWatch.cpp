#include "linux/input/evdev/DescriptorWatch.h"

#include <glib-unix.h>

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
    // GLib keeps the data until a running dispatch has returned.
    const GDestroyNotify drop = [](gpointer data) {
        std::unique_ptr<Ready>(static_cast<Ready*>(data));
    };
    g_source_set_callback(source.get(), G_SOURCE_FUNC(dispatch),
                          std::make_unique<Ready>(std::move(ready)).release(), drop);
    g_source_attach(source.get(), nullptr);
}

} // namespace kelo::input
