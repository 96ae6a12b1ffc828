#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <libsoup/soup.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace kelo::rig {

/// Stands in for the service with pages of a test's own, at the service's origin and under its
/// certificate. It answers while the main context runs, which every wait on the accessibility bus
/// does.
class StandInService {
public:
    static constexpr std::uint16_t servicePort = 8443;

    /// Serves these pages (path → HTML) at https://localhost:8443; any other path is answered with
    /// an empty page. At another port it is another site under the same certificate. Throws
    /// std::runtime_error when the port is taken.
    StandInService(const std::filesystem::path& authority, std::map<std::string, std::string> pages,
                   std::uint16_t port = servicePort);
    /// The same from another host: at http://127.0.0.1 on a free port.
    explicit StandInService(std::map<std::string, std::string> pages);
    ~StandInService();
    StandInService(const StandInService&) = delete;
    StandInService& operator=(const StandInService&) = delete;

    /// Serves a file of this name at the path, and never comes to its end.
    void serveEndlessly(const std::string& path, const std::string& fileName);

    /// "http://127.0.0.1:4711"
    std::string origin() const;
    /// Path and query of every request so far.
    const std::vector<std::string>& requests() const { return received; }
    bool wasAsked(const std::string& target) const;

private:
    void serve();
    void answer(SoupServerMessage& message);

    std::map<std::string, std::string> pages;
    std::map<std::string, std::string> endlessFiles; ///< names by path
    std::vector<std::string> received;
    gobject::GObjectPointer<SoupServer> server;
};

} // namespace kelo::rig
