#include "linux/startup/LargeBlocks.h"

#include <malloc.h>

namespace kelo::startup {

void keepLargeBlocksApart() {
    // Setting it, even to its default, is what keeps it from growing.
    constexpr int size = 128 * 1024;
    mallopt(M_MMAP_THRESHOLD, size);
}

} // namespace kelo::startup
