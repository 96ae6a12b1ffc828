#pragma once

#include <string>

namespace kelo::desktop {

/// Has GTK draw with cairo where OpenGL would run on the processor: there the GL renderer costs
/// about 95 MiB and up to 1.5 s to the first frame. A renderer the user chose (GSK_RENDERER) stays.
/// To be called first in main, before any thread and before GTK starts: it sets the environment.
void chooseRenderer();

/// Whether a graphics card is usable: some render node in the folder can be opened. Split off so
/// that a test can ask about a folder of its own.
bool hasRenderNode(const std::string& folder);

} // namespace kelo::desktop
