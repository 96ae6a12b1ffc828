#pragma once

#include "posix/FileDescriptor.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace kelo::updater {

/// Whether the program starts on this computer: run with --help, it exits with status 0 before the
/// deadline. Its standard streams are /dev/null. Blocks.
bool printsHelp(const std::filesystem::path& program, std::chrono::milliseconds deadline);

/// Runs a program from PATH with the file as its argument. True if it exits with status 0, and also
/// if it still runs at the deadline, because some openers run as long as the program they opened.
/// Blocks.
bool opensFile(const std::string& program, const std::string& argument,
               std::chrono::milliseconds deadline);

/// Starts the program as soon as this process has ended, for whatever reason: in a session of its
/// own, with the given environment (NAME=value) and the standard streams of this process, and with
/// no other open descriptor. By then this process has released all it held, such as its name on the
/// session bus. If this process does not end within five minutes, nothing is started. False if the
/// system refuses.
bool relaunchAfterThisProcess(const std::filesystem::path& program,
                              const std::vector<std::string>& environment);

/// The program that watches an update's first start (StartWatch.h), open, so that it can be run
/// wherever an exchange has moved it. None if the tree has none.
posix::FileDescriptor openStartWatcher(const std::filesystem::path& root);

/// The same as relaunchAfterThisProcess() for the tree's program, with its start being watched.
/// Without a watcher (none) it is only started.
bool relaunchWatched(const posix::FileDescriptor& watcher, const std::filesystem::path& root,
                     const std::vector<std::string>& environment);

/// Has the watcher watch this process, which is about to run the tree's program in its own place.
/// words: its arguments, the program's name included; the tree before is started with the same ones
/// if need be. False if the system refuses.
bool watchThisProcess(const posix::FileDescriptor& watcher, const std::filesystem::path& root,
                      const std::vector<std::string>& words);

} // namespace kelo::updater
