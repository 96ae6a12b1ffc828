#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::integration {

/// What an unpacked copy needs to know of its place and of this desktop.
struct Places {
    std::filesystem::path program;                 ///< the running one; empty if it is unknown
    std::filesystem::path home;                    ///< the user's
    std::filesystem::path data;                    ///< for the user's programs: $XDG_DATA_HOME
    std::filesystem::path config;                  ///< $XDG_CONFIG_HOME
    std::vector<std::filesystem::path> systemData; ///< for every user's: $XDG_DATA_DIRS
    std::string bus;                               ///< address of the session bus; may be empty

    static Places standard();
};

struct Outcome {
    bool done = false;
    std::string sentence; ///< what happened, for the user
};

/// Puts the copy that runs into the user's menu: its entry, its icons, and the file by which the
/// session bus starts it. Writes into the user's data folder only, and over nothing that it has not
/// written itself; what it writes it records there. An entry that starts Kelo at login follows the
/// copy. Doing it again repairs what is missing, and follows a copy that was moved. Changes nothing
/// where a copy is installed for every user, or this one was not unpacked from an archive. Blocks
/// for the disk.
Outcome integrate(const Places& places);

/// Removes what integrate() has made, the folders and the entry for the login included. A file that
/// somebody has changed since stays, and is named.
Outcome remove(const Places& places);

/// Integrates again if the copy that was integrated is no longer at its place, which means that
/// this is the one, or if it was replaced by another build. Else does nothing.
void follow(const Places& places);

/// follow() at the standard places, once the main loop has run for ten seconds. Main thread only.
void followLater();

} // namespace kelo::integration
