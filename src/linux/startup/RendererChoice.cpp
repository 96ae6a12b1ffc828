#include "linux/startup/RendererChoice.h"

#include "linux/startup/EglDrivers.h"
#include "linux/startup/OwnVariables.h"
#include "linux/window/ToolkitVersion.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kelo::startup {

namespace {

/// The toolkit that runs decides, not the one that this was built with: each complains of a value
/// that it does not know.
std::pair<const char*, const char*> switchForOpenGl() {
    if (window::readsDisableVariable())
        return {"GDK_DISABLE", "gl"};
    return {"GDK_DEBUG", "gl-disable"};
}

} // namespace

// Every driver of Mesa needs a render node; without one Mesa draws in software. Asking OpenGL
// itself would load the libraries that are to be avoided.
bool hasRenderNode(const std::string& folder) {
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(folder, missing)) {
        if (!entry.path().filename().string().starts_with("renderD"))
            continue;
        if (access(entry.path().c_str(), R_OK | W_OK) == 0)
            return true;
    }
    return false;
}

void chooseRenderer() {
    const char* const forced = std::getenv("LIBGL_ALWAYS_SOFTWARE");
    const bool software = forced && std::string(forced) != "0" && std::string(forced) != "false";
    // NVIDIA's own driver needs no render node.
    const bool hardware = hasRenderNode("/dev/dri") || access("/dev/nvidiactl", R_OK | W_OK) == 0;
    const auto isSet = [](const char* name) { return std::getenv(name) != nullptr; };
    if ((hardware && !software) ||
        std::ranges::any_of(std::array{"GSK_RENDERER", "GDK_DEBUG", "GDK_DISABLE"}, isSet))
        return;
    // The engine would ask OpenGL for buffers to share before it asks the toolkit whether there is
    // any, and complain of the answer.
    const std::pair<const char*, const char*> noSharedBuffers{"WEBKIT_DISABLE_DMABUF_RENDERER",
                                                              "1"};
    for (const auto& [name, value] :
         {std::pair{"GSK_RENDERER", "cairo"}, switchForOpenGl(), noSharedBuffers})
        setOwnVariable(name, value);
    hideEglDrivers();
}

} // namespace kelo::startup
