#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <libsoup/soup.h>

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::rig {

/// A publisher's web server: the files of a folder over HTTPS, on a free port, under the
/// certificate of a demo service's authority. It answers while the main context runs, which every
/// wait on the accessibility bus does.
class DownloadServer {
public:
    /// The authority's folder must hold a server certificate already. Throws std::runtime_error
    /// when it does not, or nothing can be listened to.
    DownloadServer(const std::filesystem::path& authority, std::filesystem::path folder);
    ~DownloadServer();
    DownloadServer(const DownloadServer&) = delete;
    DownloadServer& operator=(const DownloadServer&) = delete;

    /// "https://localhost:4711"
    std::string origin() const;

    /// From now on, sends half of each file, and the rest when letGo() is called, so that a test
    /// can look at a download in progress.
    void holdBack() { holds = true; }
    void letGo();

    /// The path of every request so far.
    const std::vector<std::string>& requests() const { return received; }

private:
    struct Held {
        gobject::GObjectPointer<SoupServerMessage> message;
        std::string rest;
    };

    void answer(SoupServerMessage& message);

    std::filesystem::path folder;
    bool holds = false;
    std::vector<Held> held;
    std::vector<std::string> received;
    gobject::GObjectPointer<SoupServer> server;
};

} // namespace kelo::rig
