#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kelo::rig {

/// A process and everything it started, itself first.
std::vector<pid_t> processTree(pid_t root);

/// Proportional set size in KiB: shared pages count by their share. 0 when it is gone.
std::uint64_t proportionalSetSize(pid_t process);

/// What lies in memory, in KiB; 0 when it is gone.
std::uint64_t residentSetSize(pid_t process);

/// The first 15 characters of the name of the program that it runs.
std::string programName(pid_t process);

std::size_t threadCount(pid_t process);

/// How many file descriptors it has open, by what they refer to: "socket", "anon_inode:[eventfd]"
/// or a file's path.
std::map<std::string, std::size_t> openDescriptors(pid_t process);

/// How often the threads of a process have gone to sleep by themselves so far: each time one of
/// them was woken before.
std::uint64_t voluntarySwitches(pid_t process);

} // namespace kelo::rig
