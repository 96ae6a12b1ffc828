#include "linux/webkit/NvidiaBlankWindow.h"

#include <unistd.h>

#include <cstdlib>

namespace kelo::desktop {

void avoidBlankWindowOnNvidia() {
    if (access("/sys/module/nvidia", F_OK) == 0)
        setenv("WEBKIT_DISABLE_DMABUF_RENDERER", "1", /*overwrite=*/0);
}

} // namespace kelo::desktop
