#include "linux/startup/NvidiaBlankWindow.h"

#include <unistd.h>

#include <cstdlib>

namespace kelo::startup {

void avoidBlankWindowOnNvidia() {
    if (access("/sys/module/nvidia", F_OK) == 0)
        setenv("WEBKIT_DISABLE_DMABUF_RENDERER", "1", /*overwrite=*/0);
}

} // namespace kelo::startup
