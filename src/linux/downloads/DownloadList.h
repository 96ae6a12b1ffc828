#pragma once

#include "linux/downloads/FileHandling.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kelo::downloads {

enum class DownloadStatus { running, finished, failed };

/// A download as the user sees it.
struct Download {
    unsigned identifier = 0; ///< of no other download
    std::string name;        ///< of the file
    DownloadStatus status = DownloadStatus::running;
    std::uint64_t received = 0; ///< in bytes
    /// In bytes; empty if nobody has said it.
    std::optional<std::uint64_t> length = std::nullopt;
    std::string path = "";    ///< once it has finished
    bool mayBeOpened = false; ///< by one click, once it has finished
    /// What happened and what to do, once it has failed.
    std::string sentence = "";
};

/// Hears of the downloads. Main thread only.
class DownloadObserver {
public:
    virtual ~DownloadObserver() = default;
    /// Anything about them has changed, except how much has arrived: look at that as often as the
    /// user should see it.
    virtual void downloadsChanged() = 0;
    /// It has just finished or failed. Not called for one that the user cancels.
    virtual void downloadEnded(const Download& download) = 0;
};

/// The downloads of this process: those that run, and those that have ended and that the user has
/// not put away. Main thread only.
class DownloadList {
public:
    explicit DownloadList(FileHandling files);
    DownloadList(const DownloadList&) = delete;
    DownloadList& operator=(const DownloadList&) = delete;

    const std::vector<Download>& all() const { return downloads; }
    std::size_t runningCount() const;

    /// Ends a running download. Nothing is left of it.
    void cancel(unsigned identifier);
    void cancelAll();
    /// Puts away those that have ended.
    void dismissEnded();
    /// For a file that was saved in this process and may be opened by one click; otherwise, logs
    /// that and does nothing.
    void open(const std::string& path);
    /// For a file that was saved in this process.
    void showInFolder(const std::string& path);
    /// Held weakly.
    void addObserver(const std::shared_ptr<DownloadObserver>& observer);

    /// A download has begun. Returns its identifier. cancel ends it and removes what there is of
    /// it; it is called at most once, and not after the download has ended.
    unsigned begin(const std::string& name, std::function<void()> cancel);
    /// These do nothing once the download has ended.
    void progress(unsigned identifier, std::uint64_t received, std::optional<std::uint64_t> length);
    void finish(unsigned identifier, const std::string& path);
    void fail(unsigned identifier, const std::string& sentence);
    /// One that did not even begin.
    void refuse(const std::string& name, const std::string& sentence);

private:
    struct Running {
        unsigned identifier;
        std::function<void()> cancel;
    };

    Download* find(unsigned identifier);
    Download* findRunning(unsigned identifier);
    void end(Download& download, DownloadStatus status);
    bool isThere(const std::string& path);
    void remove(unsigned identifier);
    void changed();
    template <typename Function>
    void tell(Function function);

    FileHandling files;
    unsigned last = 0;
    std::vector<Download> downloads; ///< in the order in which they began
    std::vector<Running> running;
    std::set<std::string> saved; ///< the paths
    std::vector<std::weak_ptr<DownloadObserver>> observers;
};

} // namespace kelo::downloads
