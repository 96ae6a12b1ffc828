#pragma once

namespace kelo::startup {

/// Makes this process find no driver for EGL, whoever asks for one in it; programs that it starts
/// find theirs. The web engine asks in every process, the interface's too, and there it shows what
/// it draws without one. Where OpenGL runs on the processor, the driver and its compiler cost the
/// interface 20 MiB and some 60 ms of its start. Before the first thread. Where EGL's library lets
/// nobody choose a driver, or is missing, nothing changes.
void hideEglDrivers();

} // namespace kelo::startup
