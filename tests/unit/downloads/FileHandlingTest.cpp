#include "linux/downloads/FileHandling.h"

#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fstream>

namespace kelo::test {
namespace {

using testing::ElementsAre;

class FileHandling : public testing::Test {
protected:
    bool mayBeOpened(const std::string& name, const std::string& contents) const {
        const std::string path = (folder / name).string();
        std::ofstream(path) << contents;
        return files.mayBeOpened(path);
    }

    const TemporaryFolder folder;
    std::vector<std::string> opened;
    const downloads::FileHandling files = downloads::desktopFileHandling(
        [this](const std::string& address) { opened.push_back(address); });
};

TEST_F(FileHandling, OpensWhatIsReadAndLookedAt) {
    EXPECT_TRUE(mayBeOpened("report.pdf", "%PDF-1.7\n"));
    EXPECT_TRUE(mayBeOpened("notes.txt", "words"));
    EXPECT_TRUE(mayBeOpened("table.csv", "a,b\n"));
    EXPECT_TRUE(mayBeOpened("picture.png", "\x89PNG\r\n\x1a\n"));
    EXPECT_TRUE(mayBeOpened("film.mp4", "words"));
    EXPECT_TRUE(mayBeOpened("letter.odt", "words"));
    EXPECT_TRUE(mayBeOpened("archive.tar.gz", "words"));
}

TEST_F(FileHandling, OpensNothingThatCouldRun) {
    for (const char* name :
         {"page.html",     "page.xhtml",  "page.mhtml",      "drawing.svg",  "run.sh",
          "run.py",        "run.desktop", "setup.exe",       "setup.deb",    "setup.rpm",
          "tool.AppImage", "tool.jar",    "tool.flatpakref", "script.js",    "link.url",
          "macro.docm",    "disk.iso",    "feed.xml",        "unknown.kelo", "unknown"})
        EXPECT_FALSE(mayBeOpened(name, "words")) << name;
}

TEST_F(FileHandling, LooksIntoFilesWithoutAnExtension) {
    EXPECT_FALSE(mayBeOpened("program", std::string("\177ELF\2\1\1\0\0\0\0\0\0\0\0\0\2\0", 18)));
    EXPECT_FALSE(mayBeOpened("script", "#!/bin/sh\necho\n"));
    EXPECT_FALSE(mayBeOpened("page", "<!doctype html><html><body></body></html>"));
    EXPECT_FALSE(mayBeOpened("entry", "[Desktop Entry]\nExec=true\n"));
}

TEST_F(FileHandling, OpensNothingThatIsNotThere) {
    EXPECT_FALSE(files.mayBeOpened((folder / "report.pdf").string()));
}

TEST_F(FileHandling, NamesTheFileByItsAddress) {
    files.open((folder / "ä b#1.pdf").string());
    EXPECT_THAT(opened, ElementsAre("file://" + folder.path().string() + "/%C3%A4%20b%231.pdf"));
}

} // namespace
} // namespace kelo::test
