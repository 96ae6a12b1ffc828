#include "linux/webkit/ExternalLinks.h"

#include "linux/glib/GObjectPointer.h"

#include <gio/gio.h>

namespace kelo::desktop {

void openWithDefaultProgram(const std::string& address) {
    const GAsyncReadyCallback finished = [](GObject*, GAsyncResult* result, gpointer) {
        GError* error = nullptr;
        g_app_info_launch_default_for_uri_finish(result, &error);
        if (const GErrorPointer failure(error); failure)
            g_warning("A link could not be opened in another program: %s", failure->message);
    };
    g_app_info_launch_default_for_uri_async(address.c_str(), nullptr, nullptr, finished, nullptr);
}

} // namespace kelo::desktop
