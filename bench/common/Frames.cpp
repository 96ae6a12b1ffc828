#include "common/Frames.h"

#include <algorithm>

namespace kelo::bench {

Frames framesSince(std::span<const MomentLine> lines, std::chrono::steady_clock::time_point begin) {
    Frames frames;
    const MomentLine* began = nullptr;
    for (const auto& line : lines) {
        if (line.name == "frameBegan" && line.time >= begin)
            began = &line;
        if (line.name != "frameEnded" || !began)
            continue;
        const auto taken = line.time - began->time;
        began = nullptr;
        ++frames.count;
        frames.longest = std::max(frames.longest, taken);
        if (taken > frameLimit)
            ++frames.janky;
    }
    return frames;
}

} // namespace kelo::bench
