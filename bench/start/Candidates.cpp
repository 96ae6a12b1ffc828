#include "start/Candidates.h"

#include "common/Programs.h"
#include "start/Trust.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

using Command = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;

Candidate plain(std::string name, Command command, Environment more = {}) {
    const auto launch = [command = std::move(command),
                         more = std::move(more)](const fs::path& profile) {
        Launch made{command, ownFolders(profile)};
        made.environment.insert(more.begin(), more.end());
        return made;
    };
    return {std::move(name), launch};
}

// What a change has brought shows only in one run with what was before it.
void addEarlierKelo(std::vector<Candidate>& all, Results& results) {
    const char* const build = std::getenv("KELO_BENCH_EARLIER");
    if (!build)
        return;
    all.push_back(plain("Kelo, earlier", {fs::path(build) / "kelo"}));
    results.note("\"Kelo, earlier\" is the build in the folder that KELO_BENCH_EARLIER names.");
}

void addEngineBrowser(std::vector<Candidate>& all, Results& results) {
    try {
        const Command command{miniBrowser(), "--ignore-tls-errors", "--geometry=1100x760",
                              measuredPage};
        all.push_back(plain("MiniBrowser, cairo", command, {{"GSK_RENDERER", "cairo"}}));
        all.push_back(plain("MiniBrowser, OpenGL", command, {{"GSK_RENDERER", "opengl"}}));
    } catch (const std::runtime_error& error) {
        results.note(std::string("Left out: ") + error.what());
    }
}

void addSurf(std::vector<Candidate>& all, Results& results) {
    const auto program = installedProgram("surf");
    if (!program)
        return results.note("Left out: surf is not installed.");
    const auto launch = [program = *program](const fs::path& profile) {
        Launch made{{program, "-t", measuredPage}, ownFolders(profile)};
        made.environment["HOME"] = profile; // It knows no other folder.
        return made;
    };
    all.push_back({"surf", launch});
}

void addEpiphany(std::vector<Candidate>& all, bool systemTrusts, Results& results) {
    const auto program = installedProgram("epiphany-browser");
    if (!program)
        return results.note("Left out: Epiphany is not installed.");
    if (!systemTrusts)
        return results.note("Left out: Epiphany trusts the system's list alone, and the demo "
                            "service's authority could not be added to it here.");
    const auto launch = [program = *program](const fs::path& profile) {
        return Launch{{program, "--private-instance",
                       "--profile=" + (profile / "epiphany").string(), measuredPage},
                      ownFolders(profile)};
    };
    all.push_back({"Epiphany, private instance", launch});
}

void addChromium(std::vector<Candidate>& all, const fs::path& authority, Results& results) {
    const auto program = installedProgram("chromium");
    const auto key = publicKeyHash(authority / "server.pem");
    if (!program || !key)
        return results.note("Left out: Chromium is not installed.");
    Command command{*program,
                    "--no-first-run",
                    "--no-default-browser-check",
                    "--password-store=basic",
                    "--force-color-profile=srgb",
                    "--ignore-certificate-errors-spki-list=" + *key,
                    "--window-size=1100,760",
                    std::string("--app=") + measuredPage};
    if (::geteuid() == 0) {
        command.insert(command.end(), {"--no-sandbox", "--test-type"});
        results.note(
            "Chromium refuses its sandbox to root, so it runs without one here; the others "
            "have theirs.");
    }
    const auto launch = [command](const fs::path& profile) {
        Launch made{command, ownFolders(profile)};
        made.command.push_back("--user-data-dir=" + (profile / "chromium").string());
        return made;
    };
    all.push_back({"Chromium --app", launch});
}

} // namespace

std::vector<Candidate> candidates(const fs::path& build, const fs::path& authority,
                                  const fs::path& folder, Results& results) {
    const bool systemTrusts = trustInPrivateDesktop(authority / "ca.pem", folder);
    std::vector<Candidate> all{
        plain("Kelo", {build / "kelo"}),
        plain("floor: GTK 4 window", {build / "bench-floor-window"}, {{"GSK_RENDERER", "cairo"}}),
        plain("floor: WebKitGTK 6 view", {build / "bench-floor-view", measuredPage},
              {{"GSK_RENDERER", "cairo"}})};
    addEarlierKelo(all, results);
    addEngineBrowser(all, results);
    addSurf(all, results);
    addEpiphany(all, systemTrusts, results);
    addChromium(all, authority, results);
    results.note("All over HTTPS on one page. The demo's authority is trusted by Kelo as compiled "
                 "in; by MiniBrowser, surf and the floor by an option; by Epiphany through the "
                 "system's list; by Chromium by the hash of the key. "
                 "The floors draw with cairo.");
    return all;
}

} // namespace kelo::bench
