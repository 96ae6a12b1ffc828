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

/// Proportional set size in KiB: each shared page is divided among its processes. 0 if the process
/// has ended.
std::uint64_t proportionalSetSize(pid_t process);

/// Resident set size in KiB; 0 if the process has ended.
std::uint64_t residentSetSize(pid_t process);

/// The first 15 characters of the name of the program that it runs.
std::string programName(pid_t process);

std::size_t threadCount(pid_t process);

/// How many file descriptors it has open, by what they refer to: "socket", "anon_inode:[eventfd]"
/// or a file's path.
std::map<std::string, std::size_t> openDescriptors(pid_t process);

/// Voluntary context switches of all threads of a process so far, which is how often they were
/// woken.
std::uint64_t voluntarySwitches(pid_t process);

} // namespace kelo::rig
