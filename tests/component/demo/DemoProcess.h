#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::demo {

/// How a run of the real program ended.
struct Outcome {
    int exitCode = -1; ///< -1 when a signal ended it
    std::string output;
    std::string errors;
};

/// Runs the program to its end.
Outcome runDemoService(const std::vector<std::string>& arguments);

/// The real program on a free port; the destructor ends it. Any exit status but success, for
/// instance after a sanitizer's report, fails the test.
class DemoProcess {
public:
    explicit DemoProcess(const std::filesystem::path& authority,
                         const std::vector<std::string>& more = {});
    DemoProcess(const DemoProcess&) = delete;
    DemoProcess& operator=(const DemoProcess&) = delete;
    ~DemoProcess();

    /// For instance https://localhost:40123, as the program prints it.
    const std::string& origin() const { return origin_; }
    std::string port() const { return origin_.substr(origin_.rfind(':') + 1); }
    std::string identifier() const;

    /// Asks it to end, and waits. The output is what came after the first line.
    Outcome stop(int signal);

private:
    gobject::GObjectPointer<GSubprocess> process;
    gobject::GObjectPointer<GDataInputStream> output;
    std::string origin_;
};

} // namespace kelo::demo
