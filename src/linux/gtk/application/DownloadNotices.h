#pragma once

#include "linux/downloads/DownloadList.h"

#include <giomm/application.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelo::gtk {

/// Tells the user by a notification of the desktop that a download has ended, unless a window that
/// shows it is in use. A click opens the file, or shows it in its folder if it is one that could
/// run. Main thread only.
class DownloadNotices final : public downloads::DownloadObserver {
public:
    /// isSeen: whether the user sees the bar with the downloads. Adds the actions of the
    /// notifications to the application. Every program of the user can call them; they take only
    /// files that the list has saved. The application has the action "open" and must outlive this.
    DownloadNotices(Gio::Application& application, std::shared_ptr<downloads::DownloadList> list,
                    std::function<bool()> isSeen);
    /// Takes the notifications back, since nobody would answer their buttons.
    ~DownloadNotices() override;

    void downloadsChanged() override {}
    void downloadEnded(const downloads::Download& download) override;

private:
    void addAction(const char* name, void (downloads::DownloadList::*run)(const std::string& path));

    Gio::Application& application;
    const std::shared_ptr<downloads::DownloadList> list;
    std::function<bool()> isSeen;
    std::vector<std::string> shown; ///< identifiers
};

} // namespace kelo::gtk
