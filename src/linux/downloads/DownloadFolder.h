#pragma once

#include "posix/FileDescriptor.h"

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace kelo::downloads {

/// Where a download goes. It grows in a hidden folder of its own, which others cannot enter, and
/// moves to its name when it is complete: a file that has its name is whole. Destroying the place
/// removes what is in the hidden folder. Main thread only.
class DownloadPlace {
public:
    struct Names;

    /// By DownloadFolder. lock: of the hidden folder, which says that somebody uses it. path: what
    /// the file will be.
    DownloadPlace(std::filesystem::path hidden, posix::FileDescriptor lock,
                  std::shared_ptr<Names> names, std::filesystem::path path);
    ~DownloadPlace();
    DownloadPlace(const DownloadPlace&) = delete;
    DownloadPlace& operator=(const DownloadPlace&) = delete;

    /// Where the download is written. There is nothing yet.
    std::string growingPath() const { return (hidden / "file").string(); }
    /// What the file will be called. No other download gets this name.
    std::string name() const { return path.filename().string(); }
    /// Gives the complete file its name, and returns its path. If another program has taken the
    /// name, the file gets the next one; nothing is overwritten. Throws std::system_error.
    std::string complete();
    /// Removes what is in the hidden folder now, as far as nobody else is busy with it.
    void discard() const;

private:
    std::filesystem::path hidden;
    posix::FileDescriptor lock;
    std::shared_ptr<Names> names;
    std::filesystem::path path;
};

/// A folder that downloads are saved in. The places may outlive it. Main thread only.
class DownloadFolder {
public:
    explicit DownloadFolder(std::filesystem::path folder) : folder(std::move(folder)) {}

    /// A place under the suggested name or one like it that neither a file nor another place has.
    /// Makes the folder if there is none. Throws std::system_error.
    std::unique_ptr<DownloadPlace> makePlace(std::string_view suggestion);

private:
    std::filesystem::path folder;
};

/// The user's downloads folder, which need not exist.
std::filesystem::path userDownloadsFolder();

/// Removes what earlier processes of this program have left unfinished in the folder. Leaves alone
/// what a running one uses. Any thread; blocks.
void removeLeftovers(const std::filesystem::path& folder);

/// The same for the user's downloads folder, on a thread of its own.
void removeLeftoversInBackground();

/// Moves the file to the path, unless there is something. False if there is. Throws
/// std::system_error.
bool moveWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to);

/// The same on file systems that cannot do it in one step: for an instant, the path is an empty
/// file.
bool claimAndMove(const std::filesystem::path& from, const std::filesystem::path& to);

} // namespace kelo::downloads
