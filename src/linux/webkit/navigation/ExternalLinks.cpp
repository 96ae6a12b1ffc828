#include "linux/webkit/navigation/ExternalLinks.h"

#include "linux/gobject/GObjectPointer.h"
#include "linux/startup/OwnVariables.h"

#include <gio/gio.h>

namespace kelo::webkit {

void openWithDefaultProgram(const std::string& address) {
    const GAsyncReadyCallback finished = [](GObject*, GAsyncResult* result, gpointer) {
        GError* error = nullptr;
        g_app_info_launch_default_for_uri_finish(result, &error);
        if (const gobject::GErrorPointer failure(error); failure)
            g_warning("A link could not be opened in another program: %s", failure->message);
    };
    const auto context =
        gobject::GObjectPointer<GAppLaunchContext>::adopt(g_app_launch_context_new());
    for (const std::string& variable : startup::ownVariables())
        g_app_launch_context_unsetenv(context.get(), variable.c_str());
    g_app_info_launch_default_for_uri_async(address.c_str(), context.get(), nullptr, finished,
                                            nullptr);
}

} // namespace kelo::webkit
