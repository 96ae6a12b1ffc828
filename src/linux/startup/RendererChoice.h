#pragma once

#include <string>

namespace kelo::startup {

/// Where OpenGL would run on the processor, makes GTK draw with cairo, and GTK and the web engine
/// do without OpenGL as far as they can. There the GL renderer costs about 95 MiB and up to 1.5 s
/// to the first frame; hideEglDrivers() says what OpenGL costs even unused. Changes nothing if
/// GSK_RENDERER, GDK_DEBUG or GDK_DISABLE is set, because the user has chosen then. What it sets is
/// among ownVariables(). Before the first thread; ProcessStart calls it.
void chooseRenderer();

/// Whether a graphics card can be used: a render node in the folder can be opened.
bool hasRenderNode(const std::string& folder);

} // namespace kelo::startup
