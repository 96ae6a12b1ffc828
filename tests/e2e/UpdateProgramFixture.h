#pragma once

#include "e2e/ProgramFixture.h"
#include "testing/rig/ChildProcess.h"
#include "testing/rig/DownloadServer.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::e2e {

/// What a version reports about itself.
struct VersionStamp {
    std::string version;
    std::string build;
};

inline const VersionStamp oldVersion{"1.0", "1"};
inline const VersionStamp newVersion{"1.1", "2"};

/// A user's home with an unpacked Kelo 1.0, and the web server of a publisher of updates.
/// Independent of the Kelo that is installed on this computer.
class UpdateProgramFixture : public ProgramFixture {
protected:
    struct SigningKey {
        std::filesystem::path file;
        std::string publicHalf;
    };

    UpdateProgramFixture();

    void SetUp() override;
    void TearDown() override;

    /// Signs 1.1 and puts it on the server, with notes.
    void publish() { publishSignedWith(ownKey); }
    /// The same, signed with a key that the installed copy does not accept.
    void publishByAStranger() { publishSignedWith(makeKey("stranger.key")); }

    /// Signs a 1.1 that shows its help and does nothing else but this shell script.
    void publishThatOnlyRuns(const std::string& script) { publishSignedWith(ownKey, script); }

    // The publisher's steps one by one.
    SigningKey makeKey(const std::string& name) const;
    /// Puts a release that was built for the key into the folder of the web server, with notes. It
    /// runs the script, or is this build.
    void pack(const VersionStamp& version, const SigningKey& key, const std::string& script = "");
    void withdraw(const VersionStamp& version) const;
    /// Signs what is in that folder, and writes the feed. The next key: null for none.
    void generate(const SigningKey& key, const SigningKey* next = nullptr) const;

    /// Unpacks a release in the home, as users do.
    void unpack(const VersionStamp& version) const;

    /// Starts the installed copy as its owner does. `environment` is added to theirs.
    void startInstalled(const std::vector<std::string>& arguments = {},
                        std::map<std::string, std::string> environment = {});
    /// Starts it a second time, which only notifies the running one, and waits for its end.
    void ask(const std::string& option) const;
    /// The same for one that may be killed. Nothing if it has not ended in time.
    std::optional<int> exitStatusOf(const std::string& option) const;
    void askForUpdates() const { ask("--check-for-updates"); }

    /// Waits for a heading or a sentence of one of Kelo's windows, drawn.
    void awaitText(const std::string& text) const { user.awaitDrawn(rig::label(text)); }
    void awaitNoText(const std::string& text) const { desktop().tree.awaitGone(rig::label(text)); }
    void choose(const std::string& button) const { user.click(rig::button(button)); }
    /// Waits until the window with the title has the keyboard.
    void awaitInFront(const std::string& title) const;
    void awaitThat(const std::string& what, const std::function<bool()>& condition) const {
        desktop().tree.awaitThat(what, condition);
    }

    /// Puts 1.0 in the place of whatever is installed.
    void reinstall() const;
    /// Ends every copy, and waits for that.
    void endCopies();

    /// What the installed copy on the disk reports about itself.
    std::string installedVersion() const;
    /// Everything in the home except the XDG folders.
    std::vector<std::string> homeContents() const;
    /// Every process that runs a program from the home.
    std::vector<pid_t> runningCopies() const;

    const std::filesystem::path home = folder.path() / "home";
    const std::filesystem::path installed = home / "Kelo";
    std::unique_ptr<rig::DownloadServer> server;
    std::unique_ptr<rig::ChildProcess> program;
    const SigningKey ownKey = makeKey("own.key");

private:
    void stamp(const std::filesystem::path& tree, const VersionStamp& stamp,
               const std::string& publicKey) const;
    void publishSignedWith(const SigningKey& key, const std::string& script = "");

    const std::filesystem::path releases = folder.path() / "releases";
};

} // namespace kelo::e2e
