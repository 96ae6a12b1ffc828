#include "linux/startup/RendererChoice.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kelo::startup {

namespace {

std::vector<std::string>& ownVariables() {
    static std::vector<std::string> variables;
    return variables;
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
    if ((hardware && !software) || std::getenv("GSK_RENDERER") || std::getenv("GDK_DEBUG"))
        return;
    for (const auto& [name, value] :
         {std::pair{"GSK_RENDERER", "cairo"}, {"GDK_DEBUG", "gl-disable"}}) {
        setenv(name, value, /*overwrite=*/0);
        ownVariables().emplace_back(name);
    }
}

const std::vector<std::string>& rendererVariables() {
    return ownVariables();
}

} // namespace kelo::startup
