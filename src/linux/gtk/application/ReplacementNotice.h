#pragma once

#include <giomm/application.h>
#include <giomm/filemonitor.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace kelo {
class Timer;
}

namespace kelo::gtk {

/// Tells the user when another version of the program has been installed in the place of the one
/// that runs, as package managers do, and offers to start it. Main thread only.
class ReplacementNotice {
public:
    /// The application has the action "restart" and must outlive this object. program: path of the
    /// running program's file; empty to watch nothing. calm: how long no file may have changed
    /// there before the user is told, because a package has more files than this one.
    ReplacementNotice(Gio::Application& application, std::string program,
                      std::chrono::milliseconds calm = std::chrono::seconds(5));
    /// Withdraws what the user was told: it is no longer so when the program ends.
    ~ReplacementNotice();
    ReplacementNotice(const ReplacementNotice&) = delete;
    ReplacementNotice& operator=(const ReplacementNotice&) = delete;

private:
    /// What tells one file from another: device and number.
    using Identity = std::pair<std::uint64_t, std::uint64_t>;

    static Identity identityOf(const std::string& path);
    void waitForCalm();
    void look();
    void withdraw();

    Gio::Application& application;
    const std::string program;
    const std::chrono::milliseconds calm;
    Identity known; ///< that runs, or that the user was told of
    bool isTold = false;
    Glib::RefPtr<Gio::FileMonitor> monitor;
    std::shared_ptr<Timer> timer;
};

} // namespace kelo::gtk
