#include "linux/integration/DesktopIntegration.h"

#include "component/installer/Trees.h"

#include <glib.h>
#include <gmock/gmock.h>

#include <set>
#include <string>

namespace kelo::integration {

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using tests::contentsOf;
using tests::readFile;
using tests::writeFile;

const std::string entryName = "applications/app.kelo.Kelo.desktop";
const std::string serviceName = "dbus-1/services/app.kelo.Kelo.service";
const std::string iconName = "icons/hicolor/scalable/apps/app.kelo.Kelo.svg";

std::set<std::string> foldersIn(const fs::path& folder) {
    std::set<std::string> folders;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_directory())
            folders.insert(entry.path());
    return folders;
}

class DesktopIntegration : public testing::Test {
protected:
    DesktopIntegration() {
        unpack(tree, "1");
        fs::create_directories(places.data);
        fs::create_directories(places.config / "autostart");
    }

    static void unpack(const fs::path& root, const std::string& build) {
        tests::writeTree(root, build);
        writeFile(root / "share" / entryName, "[Desktop Entry]\nName=Kelo\nExec=kelo\n"
                                              "Actions=open;\n\n[Desktop Action open]\n"
                                              "Name=Open\nExec=kelo --open\n");
        writeFile(root / "share" / iconName, "<svg>" + build + "</svg>");
    }

    void moveTree(const fs::path& place) {
        fs::create_directories(place.parent_path());
        fs::rename(tree, place);
        tree = place;
        places.program = tree / "bin/kelo";
    }

    std::string entry() const { return readFile(places.data / entryName); }
    std::string service() const { return readFile(places.data / serviceName); }

    /// What the bus starts: it reads two backslashes as one and takes the rest apart as a shell.
    std::string startedByBus() const {
        std::string line = service().substr(service().find("Exec=") + 5);
        line = line.substr(0, line.find('\n'));
        for (std::size_t at = 0; (at = line.find('\\', at)) != std::string::npos; ++at) {
            EXPECT_EQ(line.substr(at, 2), "\\\\") << "the bus knows no other";
            line.erase(at, 1);
        }
        char** words = nullptr;
        int count = 0;
        EXPECT_TRUE(g_shell_parse_argv(line.c_str(), &count, &words, nullptr)) << line;
        const std::string program = count > 0 ? words[0] : "";
        EXPECT_EQ(count, 2);
        g_strfreev(words);
        return program;
    }

    tests::TreeFolder folder;
    fs::path tree = folder / "home/Kelo";
    Places places{tree / "bin/kelo",      folder / "home",     folder / "home/data",
                  folder / "home/config", {folder / "system"}, ""};
};

} // namespace

TEST_F(DesktopIntegration, PutsAnUnpackedTreeIntoTheMenu) {
    const auto outcome = integrate(places);
    EXPECT_TRUE(outcome.done);
    EXPECT_THAT(outcome.sentence, HasSubstr(places.program.string()));
    const std::string program = places.program;
    EXPECT_THAT(entry(), AllOf(HasSubstr("\nExec=\"" + program + "\"\nTryExec=" + program +
                                         "\nDBusActivatable=true\nActions"),
                               HasSubstr("\nExec=\"" + program + "\" --open\n")));
    EXPECT_THAT(entry().substr(entry().find("TryExec") + 7), Not(HasSubstr("TryExec")));
    EXPECT_EQ(startedByBus(), program);
    EXPECT_EQ(readFile(places.data / iconName), "<svg>1</svg>");
}

TEST_F(DesktopIntegration, DoneAgainIsTheSame) {
    ASSERT_TRUE(integrate(places).done);
    const auto once = contentsOf(folder.path());
    ASSERT_TRUE(integrate(places).done);
    EXPECT_EQ(contentsOf(folder.path()), once);
}

TEST_F(DesktopIntegration, RepairsWhatIsMissing) {
    ASSERT_TRUE(integrate(places).done);
    const auto once = contentsOf(places.data);
    fs::remove(places.data / serviceName);
    fs::remove_all(places.data / "icons");
    ASSERT_TRUE(integrate(places).done);
    EXPECT_EQ(contentsOf(places.data), once);
}

TEST_F(DesktopIntegration, IsRemovedWithoutATrace) {
    writeFile(places.data / "applications/other.desktop", "other");
    const auto files = contentsOf(folder.path());
    const auto folders = foldersIn(folder.path());
    ASSERT_TRUE(integrate(places).done);
    ASSERT_NE(contentsOf(folder.path()), files);
    EXPECT_TRUE(remove(places).done);
    EXPECT_EQ(contentsOf(folder.path()), files);
    EXPECT_EQ(foldersIn(folder.path()), folders);
}

TEST_F(DesktopIntegration, IsRemovedTwiceWithoutHarm) {
    ASSERT_TRUE(integrate(places).done);
    ASSERT_TRUE(remove(places).done);
    const auto files = contentsOf(folder.path());
    const auto again = remove(places);
    EXPECT_TRUE(again.done);
    EXPECT_THAT(again.sentence, HasSubstr("nothing to remove"));
    EXPECT_EQ(contentsOf(folder.path()), files);
}

TEST_F(DesktopIntegration, LeavesPasskeysWhereTheRecordLies) {
    writeFile(places.data / "kelo/passkeys.sqlite", "passkeys");
    ASSERT_TRUE(integrate(places).done);
    ASSERT_TRUE(remove(places).done);
    EXPECT_EQ(readFile(places.data / "kelo/passkeys.sqlite"), "passkeys");
}

TEST_F(DesktopIntegration, WritesOverNothingThatItHasNotMade) {
    for (const auto& path : {entryName, serviceName, iconName}) {
        writeFile(places.data / path, "mine");
        const auto files = contentsOf(folder.path());
        const auto outcome = integrate(places);
        EXPECT_FALSE(outcome.done);
        EXPECT_THAT(outcome.sentence, HasSubstr((places.data / path).string()));
        EXPECT_EQ(contentsOf(folder.path()), files);
        fs::remove(places.data / path);
    }
}

TEST_F(DesktopIntegration, WritesThroughNoLink) {
    writeFile(folder / "elsewhere", "mine");
    fs::create_directories(places.data / "applications");
    fs::create_symlink(folder / "nowhere", places.data / entryName);
    EXPECT_FALSE(integrate(places).done);
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
}

TEST_F(DesktopIntegration, LeavesAFileThatWasChangedSince) {
    ASSERT_TRUE(integrate(places).done);
    writeFile(places.data / entryName, entry() + "Comment=mine\n");
    EXPECT_FALSE(integrate(places).done);
    const auto outcome = remove(places);
    EXPECT_FALSE(outcome.done);
    EXPECT_THAT(outcome.sentence, HasSubstr((places.data / entryName).string()));
    EXPECT_THAT(entry(), HasSubstr("Comment=mine"));
    EXPECT_EQ(contentsOf(places.data).size(), 1U);
}

TEST_F(DesktopIntegration, IsRefusedWhereACopyIsInstalledForAll) {
    writeFile(folder / "system" / entryName, "[Desktop Entry]\n");
    const auto files = contentsOf(folder.path());
    const auto outcome = integrate(places);
    EXPECT_FALSE(outcome.done);
    EXPECT_THAT(outcome.sentence, HasSubstr("for everyone"));
    EXPECT_EQ(contentsOf(folder.path()), files);
}

TEST_F(DesktopIntegration, IsRefusedForTheCopyOfThePackageManager) {
    places.program = "/usr/bin/kelo";
    EXPECT_THAT(integrate(places).sentence, HasSubstr("for everyone"));
}

TEST_F(DesktopIntegration, IsRefusedForACopyThatWasNotUnpacked) {
    fs::remove(tree / "share" / entryName);
    const auto outcome = integrate(places);
    EXPECT_FALSE(outcome.done);
    EXPECT_THAT(outcome.sentence, HasSubstr("not unpacked"));
    EXPECT_THAT(contentsOf(places.data), IsEmpty());
}

TEST_F(DesktopIntegration, FollowsATreeThatWasMoved) {
    ASSERT_TRUE(integrate(places).done);
    moveTree(folder / "home/Programs/Kelo");
    ASSERT_TRUE(integrate(places).done);
    EXPECT_THAT(entry(), AllOf(HasSubstr("Exec=\"" + places.program.string() + "\""),
                               Not(HasSubstr("home/Kelo/"))));
    EXPECT_EQ(startedByBus(), places.program);
}

TEST_F(DesktopIntegration, FollowsAMovedTreeAlsoUnasked) {
    ASSERT_TRUE(integrate(places).done);
    moveTree(folder / "home/Programs/Kelo");
    follow(places);
    EXPECT_EQ(startedByBus(), places.program);
    EXPECT_TRUE(fs::is_empty(places.config / "autostart"));
}

TEST_F(DesktopIntegration, StaysWithTheTreeThatIsStillThere) {
    ASSERT_TRUE(integrate(places).done);
    const auto files = contentsOf(places.data);
    unpack(folder / "home/Another", "2");
    places.program = folder / "home/Another/bin/kelo";
    follow(places);
    EXPECT_EQ(contentsOf(places.data), files);
}

TEST_F(DesktopIntegration, IsNotBegunUnasked) {
    follow(places);
    EXPECT_THAT(contentsOf(places.data), IsEmpty());
}

TEST_F(DesktopIntegration, TakesTheIconsOfANewBuildUnasked) {
    writeFile(tree / "share/icons/hicolor/symbolic/apps/old.svg", "old");
    ASSERT_TRUE(integrate(places).done);
    fs::remove_all(tree);
    unpack(tree, "2");
    follow(places);
    EXPECT_EQ(readFile(places.data / iconName), "<svg>2</svg>");
    EXPECT_FALSE(fs::exists(places.data / "icons/hicolor/symbolic/apps/old.svg"));
    const auto made = [this] {
        const auto record = readFile(places.data / "kelo/integration.json");
        return record.substr(0, record.find("folders"));
    };
    const auto now = made();
    EXPECT_TRUE(remove(places).done);
    EXPECT_THAT(contentsOf(places.data), IsEmpty());
    EXPECT_TRUE(integrate(places).done);
    EXPECT_EQ(made(), now) << "it goes on about what was";
    EXPECT_TRUE(remove(places).done);
    EXPECT_THAT(contentsOf(places.data), IsEmpty());
}

TEST_F(DesktopIntegration, TakesTheStartAtLoginAlong) {
    ASSERT_TRUE(integrate(places).done);
    const auto login = places.config / "autostart/app.kelo.Kelo.desktop";
    writeFile(login, "TryExec=" + places.program.string() + "\nExec=\"" + places.program.string() +
                         "\" --background\n");
    moveTree(folder / "home/Programs/Kelo");
    ASSERT_TRUE(integrate(places).done);
    EXPECT_EQ(readFile(login), "TryExec=" + places.program.string() + "\nExec=\"" +
                                   places.program.string() + "\" --background\n");
    ASSERT_TRUE(remove(places).done);
    EXPECT_FALSE(fs::exists(login));
}

TEST_F(DesktopIntegration, LeavesTheStartAtLoginOfAnotherCopy) {
    ASSERT_TRUE(integrate(places).done);
    const auto login = places.config / "autostart/app.kelo.Kelo.desktop";
    writeFile(login, "TryExec=/opt/kelo/bin/kelo\n");
    moveTree(folder / "home/Programs/Kelo");
    ASSERT_TRUE(integrate(places).done);
    ASSERT_TRUE(remove(places).done);
    EXPECT_EQ(readFile(login), "TryExec=/opt/kelo/bin/kelo\n");
}

TEST_F(DesktopIntegration, StoppedHalfwayCanBeRepeatedAndRemoved) {
    writeFile(places.data / "icons", "where the folder must be");
    const auto outcome = integrate(places);
    EXPECT_FALSE(outcome.done);
    EXPECT_THAT(outcome.sentence, HasSubstr("could not be written"));
    ASSERT_TRUE(fs::exists(places.data / entryName));
    fs::remove(places.data / "icons");
    EXPECT_TRUE(integrate(places).done);
    EXPECT_TRUE(remove(places).done);
    EXPECT_THAT(contentsOf(places.data), IsEmpty());
    EXPECT_THAT(foldersIn(places.data), IsEmpty());
}

TEST_F(DesktopIntegration, BelievesNoRecordThatLeadsElsewhere) {
    writeFile(folder / "home/mine", "");
    const std::string ofNothing =
        "\"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855\"";
    const std::string start = R"({"program":"/x","build":"1","folders":["../empty"],"files":{)";
    fs::create_directory(folder / "home/empty");
    const std::set<std::string> outside{"../mine", folder / "home/mine"};
    for (const auto& path : outside) {
        writeFile(places.data / "kelo/integration.json", start + "\"applications/made\":[" +
                                                             ofNothing + "],\"" + path + "\":[" +
                                                             ofNothing + "]}}");
        writeFile(places.data / "applications/made", "");
        remove(places);
        EXPECT_FALSE(fs::exists(places.data / "applications/made")) << "the record was not read";
        EXPECT_TRUE(fs::exists(folder / "home/mine")) << path;
        EXPECT_TRUE(fs::exists(folder / "home/empty"));
    }
}

TEST_F(DesktopIntegration, TakesADamagedRecordForNone) {
    for (const auto* record : {"", "{", "[]", "{\"program\":1}",
                               R"({"program":"","build":"","files":[1],"folders":[]})"}) {
        writeFile(places.data / "kelo/integration.json", record);
        EXPECT_THAT(remove(places).sentence, HasSubstr("nothing to remove")) << record;
        EXPECT_TRUE(integrate(places).done) << record;
        EXPECT_TRUE(remove(places).done) << record;
        EXPECT_FALSE(fs::exists(places.data / entryName)) << record;
    }
}

TEST_F(DesktopIntegration, NamesAFolderWithAnyPlainCharacters) {
    moveTree(folder / "home/a \"b\" $c `d` 'e' \\sf %g ü/Kelo");
    ASSERT_TRUE(integrate(places).done);
    EXPECT_EQ(startedByBus(), places.program);
    GKeyFile* const file = g_key_file_new();
    ASSERT_TRUE(g_key_file_load_from_file(file, (places.data / entryName).c_str(), G_KEY_FILE_NONE,
                                          nullptr));
    char* const program = g_key_file_get_string(file, "Desktop Entry", "TryExec", nullptr);
    EXPECT_STREQ(program, places.program.c_str());
    g_free(program);
    g_key_file_unref(file);
}

TEST_F(DesktopIntegration, RefusesAFolderThatNoMenuCanName) {
    for (const auto* name : {"a\nb", "a\tb", "a\xff"}) {
        moveTree(folder / "home" / name / "Kelo");
        const auto outcome = integrate(places);
        EXPECT_FALSE(outcome.done);
        EXPECT_THAT(outcome.sentence, HasSubstr("plain name"));
        EXPECT_THAT(contentsOf(places.data), IsEmpty());
    }
}

TEST_F(DesktopIntegration, MakesAnIconCacheLookOld) {
    fs::create_directories(places.data / "icons/hicolor");
    const auto cache = places.data / "icons/hicolor/icon-theme.cache";
    writeFile(cache, "cache");
    const auto before = fs::file_time_type::clock::now() - std::chrono::hours(1);
    fs::last_write_time(cache, before);
    fs::create_directories(places.data / "icons/hicolor/scalable/apps");
    fs::last_write_time(places.data / "icons/hicolor", before - std::chrono::hours(1));
    ASSERT_TRUE(integrate(places).done);
    EXPECT_GT(fs::last_write_time(places.data / "icons/hicolor"), fs::last_write_time(cache));
}

} // namespace kelo::integration
