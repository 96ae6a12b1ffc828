#pragma once

#include <string>
#include <vector>

namespace kelo::startup {

/// Has GTK draw with cairo, and GTK and the web engine do without OpenGL, where OpenGL would run on
/// the processor: there the GL renderer costs about 95 MiB and up to 1.5 s to the first frame, and
/// merely having it at hand another 100 MiB in all processes and 0.3 s to the first page. The price
/// is that pages have no WebGL on such machines. Nothing is changed when the user chose a renderer
/// (GSK_RENDERER) or set GDK_DEBUG. To be called first in main, before any thread and before GTK
/// starts: it sets the environment.
void chooseRenderer();

/// The variables that chooseRenderer() set in this process. They are our choice alone: a program
/// that we start for the user must not inherit it.
const std::vector<std::string>& rendererVariables();

/// Whether a graphics card is usable: some render node in the folder can be opened. Split off so
/// that a test can ask about a folder of its own.
bool hasRenderNode(const std::string& folder);

} // namespace kelo::startup
