#include "e2e/ProgramFixture.h"
#include "testing/rig/StandInService.h"

#include <csignal>
#include <fstream>
#include <vector>

namespace kelo::e2e {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds patience{30};

constexpr const char* page = R"html(<!doctype html><title>Files</title>
<h1>Files</h1>
<p><button onclick="location = '/endless'">Get the report</button></p>
<script>
const made = document.createElement('a');
made.download = 'made.txt';
made.href = URL.createObjectURL(new Blob(['contents']));
</script>
<p><button onclick="made.click()">Make a file</button></p>
<p><a href="/endless">The report</a></p>)html";

/// A page with a file that never comes to its end.
class Download : public ProgramFixture {
protected:
    void SetUp() override {
        startService(); // makes the certificate
        service.reset();
        files = std::make_unique<rig::StandInService>(
            authority, std::map<std::string, std::string>{{"/", page}});
        fs::create_directories(folder / "config");
        std::ofstream(folder / "config" / "user-dirs.dirs")
            << "XDG_DOWNLOAD_DIR=\"" << (folder / "Downloads").string() << "\"\n";
        files->serveEndlessly("/endless", "report.pdf");
        startKelo();
        user.awaitDrawn(rig::pageHeading("Files"));
    }
    void TearDown() override {
        ProgramFixture::TearDown();
        files.reset();
    }

    void startDownload() const {
        user.click(rig::pageButton("Get the report"));
        user.awaitDrawn(cancelButton);
    }
    /// Everything in the downloads folder, hidden or not.
    std::vector<std::string> saved() const {
        std::vector<std::string> names;
        std::error_code missing;
        for (const auto& entry : fs::directory_iterator(folder / "Downloads", missing))
            names.push_back(entry.path().filename().string());
        return names;
    }

    const rig::Wanted cancelButton = rig::button("Cancel report.pdf");
    std::unique_ptr<rig::StandInService> files;
};

} // namespace

TEST_F(Download, IsShownAndCancelledByAClick) {
    startDownload();
    look("running");
    user.click(cancelButton);
    desktop().tree.awaitGone(cancelButton);
    desktop().tree.awaitThat("nothing is left", [&] { return saved().empty(); });
    EXPECT_TRUE(kelo->isRunning());
}

TEST_F(Download, ThatIsCompleteIsThereUnderItsName) {
    user.click(rig::pageButton("Make a file"));
    user.awaitDrawn(rig::button("Open made.txt"));
    awaitAnnounced("Download finished: made.txt");
    look("finished");
    EXPECT_EQ(saved(), std::vector<std::string>{"made.txt"});
    user.click(rig::button("Close"));
    desktop().tree.awaitGone(rig::button("Open made.txt"));
}

TEST_F(Download, IsChosenInThePagesOwnMenu) {
    desktop().screen.pointer.click(user.awaitDrawn(rig::pageLink("The report")).middle(), 3);
    desktop().tree.await(rig::menuItem("Save Link"));
    picture("menu");
    user.chooseFromOpenMenu("Save Link");
    user.awaitDrawn(cancelButton);
}

TEST_F(Download, IsKeptByTheQuestionAtQuitAndThenGivenUp) {
    startDownload();
    user.chooseFromMenu("Kelo", "Quit");
    user.awaitDrawn(rig::button("Keep Downloading"));
    look("question");
    user.answerAlert("Keep Downloading");
    EXPECT_TRUE(kelo->isRunning());
    EXPECT_EQ(saved().size(), 1u);
    user.awaitDrawn(cancelButton);

    user.chooseFromMenu("Kelo", "Quit");
    user.answerAlert("Quit Anyway");
    EXPECT_EQ(kelo->awaitExit(patience), 0) << kelo->printed();
    EXPECT_TRUE(saved().empty());
}

TEST_F(Download, OfAKilledProgramIsRemovedByTheNextStart) {
    startDownload();
    EXPECT_EQ(saved().size(), 1u);
    ::kill(kelo->identifier(), SIGKILL);
    kelo->awaitExit(patience);
    kelo.reset();
    EXPECT_EQ(saved().size(), 1u);
    startKelo();
    desktop().tree.awaitThat("nothing is left", [&] { return saved().empty(); });
}

} // namespace kelo::e2e
