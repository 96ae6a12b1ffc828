#pragma once

#include "base/async/Task.h"

#include <cstddef>

namespace kelo {

/// Starts a detached task on the main thread in a later turn of the loop and returns immediately.
/// The task must handle its own failures: an uncaught exception ends the process.
void spawn(Task<void> task);

/// The number of spawned tasks that are still running.
std::size_t spawnedTaskCount();

/// Destroys every spawned task that is still running, wherever it is suspended. Called at the end
/// of the process and of each test, before the objects that the tasks refer to are destroyed.
void dropSpawnedTasks();

} // namespace kelo
