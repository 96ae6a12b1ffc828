#include "linux/startup/UnsafeVariables.h"

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::startup {

namespace {

// What stays, and why:
// - LD_* and GCONV_PATH have taken effect before main() begins.
// - GTK_IM_MODULE, GDK_BACKEND, GDK_DEBUG, GDK_DISABLE, GSK_RENDERER and GIO_USE_* choose among
//   what is installed. Input methods and old graphics drivers need them.
// - GST_* reaches the engine's sandboxed processes only, and people use it to play more formats.
// - Proxies and XDG_* say where things are, as the desktop means them to.
constexpr std::array unsafe{
    // The engine's inspector for other programs. It asks nobody, and shows the session's cookies.
    "WEBKIT_INSPECTOR_SERVER",
    "WEBKIT_INSPECTOR_HTTP_SERVER",
    // They decide whether pages run in the sandbox. Kelo decides that itself.
    "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS",
    "WEBKIT_FORCE_SANDBOX",
    "WEBKIT_ENABLE_DEBUG_PERMISSIONS_IN_SANDBOX",
    // Lets pages play media from places that the engine forbids.
    "WEBKIT_GST_ALLOWED_URI_PROTOCOLS",
    // Where the engine's own programs are, and what they are started with. Only some builds of the
    // engine read them.
    "WEBKIT_EXEC_PATH",
    "WEBKIT_INJECTED_BUNDLE_PATH",
    "WEB_PROCESS_CMD_PREFIX",
    "NETWORK_PROCESS_CMD_PREFIX",
    // Options of the script engine. Some of them let pages read the memory of their process.
    "JSC_*",
    // The TLS library writes the keys of all connections into a file, or takes weak ciphers.
    "SSLKEYLOGFILE",
    "G_TLS_GNUTLS_PRIORITY",
    // "interactive" and "all" open the toolkit's inspector, which shows what is in every entry. The
    // other words are for people who build the toolkit, so none of them is kept.
    "GTK_DEBUG",
    // Folders whose libraries are loaded into this process. Terminals inside a snap or an AppImage
    // leave them behind, and their modules do not even fit the libraries here.
    "GTK_PATH",
    "GTK_EXE_PREFIX",
    "GIO_EXTRA_MODULES",
    "GIO_MODULE_DIR",
};

std::vector<std::string> namesThatBeginWith(std::string_view beginning) {
    std::vector<std::string> names;
    for (char** entry = environ; entry && *entry; ++entry) {
        const std::string_view variable(*entry);
        if (variable.starts_with(beginning))
            names.emplace_back(variable.substr(0, variable.find('=')));
    }
    return names;
}

} // namespace

void unsetUnsafeVariables() {
    for (const std::string_view name : unsafe) {
        if (!name.ends_with('*')) {
            unsetenv(name.data());
            continue;
        }
        for (const auto& each : namesThatBeginWith(name.substr(0, name.size() - 1)))
            unsetenv(each.c_str());
    }
}

std::span<const char* const> unsafeVariables() {
    return unsafe;
}

} // namespace kelo::startup
