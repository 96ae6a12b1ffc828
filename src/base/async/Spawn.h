#pragma once

#include "base/async/Task.h"

#include <cstddef>

namespace kelo {

/// Starts a task of its own on the main thread, in a later turn of the loop; the caller goes on at
/// once. The task must deal with its own failures: an exception that leaves it ends the process.
void spawn(Task<void> task);

/// How many spawned tasks have not ended yet.
std::size_t spawnedTaskCount();

/// Drops every spawned task that has not ended, wherever it is suspended. For the end of the
/// process and of a test, before the objects go that the tasks refer to.
void dropSpawnedTasks();

} // namespace kelo
