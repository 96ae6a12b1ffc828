#pragma once

#include <string>

namespace kelo::startup {

/// Where OpenGL would run on the processor, makes GTK draw with cairo, and GTK and the web engine
/// do without OpenGL. There the GL renderer costs about 95 MiB and up to 1.5 s to the first frame;
/// even unused, OpenGL costs another 100 MiB in all processes and 0.3 s to the first page. In
/// return, pages have no WebGL on such machines. Changes nothing if GSK_RENDERER, GDK_DEBUG or
/// GDK_DISABLE is set, because the user has chosen then. What it sets is among ownVariables().
/// ProcessStart calls it.
void chooseRenderer();

/// Whether a graphics card can be used: a render node in the folder can be opened.
bool hasRenderNode(const std::string& folder);

} // namespace kelo::startup
