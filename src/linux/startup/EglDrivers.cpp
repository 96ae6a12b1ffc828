#include "linux/startup/EglDrivers.h"

#include <dlfcn.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace kelo::startup {

namespace {

/// The value of a variable while this lives; afterwards it is as it was.
class VariableForNow {
public:
    VariableForNow(const char* name, const char* value) : name(name) {
        if (const char* const found = std::getenv(name))
            before = found;
        setenv(name, value, /*overwrite=*/1);
    }
    ~VariableForNow() {
        if (before)
            setenv(name, before->c_str(), /*overwrite=*/1);
        else
            unsetenv(name);
    }
    VariableForNow(const VariableForNow&) = delete;
    VariableForNow& operator=(const VariableForNow&) = delete;

private:
    const char* name;
    std::optional<std::string> before;
};

} // namespace

// The library reads the list of drivers once, when it is asked for the first time. So it is asked
// now, with an empty list, and keeps it after the variable is gone. It stays loaded for the same
// reason.
void hideEglDrivers() {
    using QueryString = const char*(void* display, int name);
    constexpr int extensions = 0x3055; // EGL_EXTENSIONS
    const VariableForNow none("__EGL_VENDOR_LIBRARY_FILENAMES", "/dev/null");
    void* const library = dlopen("libEGL.so.1", RTLD_LAZY);
    if (!library)
        return;
    if (auto* const query = reinterpret_cast<QueryString*>(dlsym(library, "eglQueryString")))
        query(/*display=*/nullptr, extensions);
}

} // namespace kelo::startup
