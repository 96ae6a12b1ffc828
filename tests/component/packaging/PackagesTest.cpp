#include "component/packaging/Packages.h"

#include "bundle/InformationFile.h"
#include "testing/LocaleFolder.h"
#include "updater/tree/InstalledCopy.h"

#include <gmock/gmock.h>

#include <gnu/libc-version.h>
#include <sstream>
#include <string>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

} // namespace

TEST(Packages, AreBothMadeAndNothingIsInstalledOnTheWay) {
    const bool installedBefore = fs::exists("/etc/pam.d/kelo");
    const auto& packages = Packages::ofThisBuild();
    EXPECT_TRUE(fs::is_regular_file(packages.package())) << packages.log();
    EXPECT_TRUE(fs::is_regular_file(packages.archive())) << packages.log();
    EXPECT_EQ(fs::exists("/etc/pam.d/kelo"), installedBefore);
}

TEST(DebianPackage, HasNothingThatLintianWouldMend) {
    if (runCommand("command -v lintian").status != 0)
        GTEST_SKIP() << "there is no lintian";
    // The metainfo lacks the homepage, which a publisher gives (KELO_HOMEPAGE).
    const auto checked = runCommand("lintian " + quoted(Packages::ofThisBuild().package()) +
                                    " | grep -v ' appstream-metadata-validation-failed '");
    for (const std::string kind : {"E:", "W:"})
        EXPECT_THAT("\n" + checked.output, Not(HasSubstr("\n" + kind)));
}

TEST(DebianPackage, HoldsEverythingInItsPlace) {
    const auto listed = runCommand("dpkg-deb -c " + quoted(Packages::ofThisBuild().package()));
    for (const auto* path :
         {"./usr/bin/kelo\n", "./usr/bin/kelo-appcast\n", "./usr/bin/kelo-passkeys\n",
          "./usr/libexec/kelo/kelo\n", "./usr/libexec/kelo/kelo-verify-user\n",
          "./usr/share/kelo/Info.plist\n", "./etc/pam.d/kelo\n", "./usr/share/man/man1/kelo.1.gz\n",
          "./usr/share/man/man1/kelo-appcast.1.gz\n", "./usr/share/doc/kelo/copyright\n",
          "./usr/share/doc/kelo/changelog.Debian.gz\n",
          "./usr/share/applications/app.kelo.Kelo.desktop\n",
          "./usr/share/dbus-1/services/app.kelo.Kelo.service\n",
          "./usr/share/metainfo/app.kelo.Kelo.metainfo.xml\n",
          "./usr/share/icons/hicolor/scalable/apps/app.kelo.Kelo.svg\n",
          "./usr/share/locale/de/LC_MESSAGES/kelo.mo\n",
          "./usr/share/locale/es/LC_MESSAGES/kelo.mo\n",
          "./usr/share/locale/fr/LC_MESSAGES/kelo.mo\n",
          "./usr/share/locale/nl/LC_MESSAGES/kelo.mo\n"})
        EXPECT_THAT(listed.output, HasSubstr(path));
    EXPECT_THAT(listed.output, Not(HasSubstr(updater::treeListPath)));
    EXPECT_THAT(listed.output, Not(HasSubstr("rws")));
    EXPECT_THAT(listed.output, Not(HasSubstr("libexec/kelo/pam.d"))) << "the one in /etc decides";
}

TEST(DebianPackage, DependsAlsoOnWhatNoLinkShows) {
    const auto depends =
        runCommand("dpkg-deb -f " + quoted(Packages::ofThisBuild().package()) + " Depends");
    for (const auto* package :
         {"libgtkmm-4.0", "libwebkitgtk-6.0", "libpam0g", "libplist", "libarchive13", "libxml2",
          "bubblewrap", "xdg-dbus-proxy", "glib-networking", "ca-certificates",
          "gstreamer1.0-pulseaudio", "dbus-session-bus"})
        EXPECT_THAT(depends.output, HasSubstr(package));
}

// One folder of downloads may hold the packages for several systems.
TEST(DebianPackage, SaysWhichSystemItIsFor) {
    const auto version =
        runCommand("dpkg-deb -f " + quoted(Packages::ofThisBuild().package()) + " Version");
    const auto system =
        runCommand(". /etc/os-release && echo $ID$VERSION_ID | sed 's/^debian/deb/'");
    EXPECT_THAT(version.output, testing::EndsWith("~" + system.output));
    EXPECT_EQ(version.output, KELO_DEBIAN_VERSION "\n");
    const auto changelog =
        runCommand("dpkg-deb --fsys-tarfile " + quoted(Packages::ofThisBuild().package()) +
                   " | tar -xO ./usr/share/doc/kelo/changelog.Debian.gz | zcat");
    EXPECT_THAT(changelog.output, HasSubstr("(" KELO_DEBIAN_VERSION ")"));
}

TEST(DebianPackage, SaysInItsNameWhichProcessorItIsFor) {
    const auto package = Packages::ofThisBuild().package();
    auto processor = runCommand("dpkg-deb -f " + quoted(package) + " Architecture").output;
    std::erase(processor, '\n');
    EXPECT_THAT(package.filename().string(), testing::EndsWith("-" + processor + ".deb"));
}

TEST(DebianPackage, IsStartedByItsNameFromItsPlace) {
    const auto& package = Packages::ofThisBuild().package();
    const std::string content = "dpkg-deb --fsys-tarfile " + quoted(package) + " | tar -xO ";
    const auto service = runCommand(content + "./usr/share/dbus-1/services/app.kelo.Kelo.service");
    EXPECT_EQ(service.output, "[D-BUS Service]\nName=app.kelo.Kelo\n"
                              "Exec=\"/usr/bin/kelo\" --background\n");
    const auto entry = runCommand(content + "./usr/share/applications/app.kelo.Kelo.desktop");
    EXPECT_THAT(entry.output, HasSubstr("\nDBusActivatable=true\n"));
}

// The bus finds programs in the system's folders only.
TEST(Tree, IsNotStartedByItsName) {
    const auto& tree = Packages::ofThisBuild().tree();
    EXPECT_FALSE(fs::exists(tree / "share/dbus-1"));
    const auto entry = readFile(tree / "share/applications/app.kelo.Kelo.desktop");
    EXPECT_THAT(entry, AllOf(HasSubstr("\nExec=kelo\n"), Not(HasSubstr("DBusActivatable"))));
}

TEST(ManualPages, ReadWithoutAWarning) {
    if (runCommand("command -v man").status != 0)
        GTEST_SKIP() << "there is no man";
    for (const auto* page : {"kelo.1.gz", "kelo-appcast.1.gz"}) {
        const auto read = runCommand(
            "LC_ALL=C.UTF-8 MANROFFSEQ= MANWIDTH=80 man --warnings "
            "-E UTF-8 -l -Tutf8 -Z " +
            quoted(Packages::ofThisBuild().tree() / "share/man/man1" / page) + " 2>&1 >/dev/null");
        EXPECT_EQ(read.status, 0);
        EXPECT_EQ(read.output, "") << page;
    }
}

TEST(ManualPages, NameEveryOption) {
    const auto& tree = Packages::ofThisBuild().tree();
    const std::string home = "HOME=" + quoted(tree.parent_path()) + " ";
    for (const std::string program : {"kelo", "kelo-appcast"}) {
        const auto help = runCommand(home + quoted(tree / "bin" / program) +
                                     " --help | grep -oE -e '--[a-z][a-z-]*' | sort -u");
        const auto page = runCommand(
            "zcat " + quoted(tree / "share/man/man1" / (program + ".1.gz")) + " | tr -d '\\\\'");
        std::istringstream options(help.output);
        int count = 0;
        for (std::string option; std::getline(options, option); ++count)
            EXPECT_THAT(page.output, HasSubstr(option)) << program;
        EXPECT_GE(count, 3) << help.output;
    }
}

TEST(DebianPackage, LeavesTheUsersOwnPamServiceAlone) {
    const auto files =
        runCommand("dpkg-deb -I " + quoted(Packages::ofThisBuild().package()) + " conffiles");
    EXPECT_EQ(files.output, "/etc/pam.d/kelo\n");
}

TEST(Tree, HasOneTopFolderAndBelongsToNobody) {
    const auto listed = runCommand("tar -tvf " + quoted(Packages::ofThisBuild().archive()) +
                                   " --numeric-owner | grep -v ' " KELO_TREE_NAME "/'");
    EXPECT_EQ(listed.output, "");
}

// Debian 12 and 13 have them under different names.
TEST(Tree, BringsTheLibrariesThatAreNotTheSameEverywhere) {
    const auto& tree = Packages::ofThisBuild().tree();
    for (const auto* program : {"libexec/kelo/kelo", "bin/kelo-appcast"}) {
        const auto found =
            runCommand("ldd " + quoted(tree / program) + " | grep -E '^\\s*lib(cbor|plist)'");
        EXPECT_THAT(found.output, HasSubstr("libplist"));
        std::istringstream lines(found.output);
        for (std::string line; std::getline(lines, line);)
            EXPECT_THAT(fs::weakly_canonical(line.substr(line.find('/'))).string(),
                        StartsWith((tree / "bin/lib").string()));
    }
    for (const auto& entry : fs::directory_iterator(tree / "bin"))
        if (const std::string name = entry.path().filename(); name.starts_with("lib")) {
            EXPECT_EQ(fs::status(entry).permissions(), fs::perms(0644)) << name;
            EXPECT_THAT(readFile(tree / "share/doc/kelo" / ("copyright-" + name)),
                        HasSubstr("Copyright"));
        }
}

// Its package manager sees to them.
TEST(DebianPackage, LooksForItsLibrariesWhereTheSystemHasThem) {
    const auto& package = Packages::ofThisBuild().package();
    const auto listed = runCommand("dpkg-deb -c " + quoted(package));
    EXPECT_THAT(listed.output, Not(HasSubstr("/libplist")));
    const TreeFolder folder;
    const auto program = quoted(folder / "kelo");
    const auto path =
        runCommand("dpkg-deb --fsys-tarfile " + quoted(package) +
                   " | tar -xO ./usr/libexec/kelo/kelo >" + program + " && readelf -d " + program);
    EXPECT_THAT(path.output, AllOf(HasSubstr("NEEDED"), Not(HasSubstr("RUNPATH"))));
}

TEST(Tree, ListsExactlyItsFiles) {
    const auto& tree = Packages::ofThisBuild().tree();
    std::string list;
    for (const auto& [path, content] : contentsOf(tree))
        list += path + "\n";
    EXPECT_EQ(readFile(tree / updater::treeListPath), list);
}

TEST(Tree, BringsThePamServiceThatItsHelperLooksFor) {
    EXPECT_THAT(readFile(Packages::ofThisBuild().tree() / "libexec/kelo/pam.d/kelo"),
                HasSubstr("@include /etc/pam.d/common-auth"));
}

TEST(Tree, IsTheUsersToReplaceWhereverItWasUnpackedInTheirHome) {
    const auto& tree = Packages::ofThisBuild().tree();
    EXPECT_EQ(updater::findInstalledCopy(tree / "bin/kelo", tree.parent_path()).owner,
              updater::CopyOwner::user);
}

// Feeds offer it to no older system.
TEST(Tree, NamesTheSystemThatItWasBuiltOn) {
    const auto information =
        bundle::readInformationFile(Packages::ofThisBuild().tree() / "share/kelo/Info.plist");
    ASSERT_TRUE(information);
    EXPECT_EQ(platform::informationValue<std::string>(*information, "LSMinimumSystemVersion"),
              gnu_get_libc_version());
}

TEST(Tree, NamesTheVersionThatWasBuilt) {
    const auto information =
        bundle::readInformationFile(Packages::ofThisBuild().tree() / "share/kelo/Info.plist");
    ASSERT_TRUE(information);
    EXPECT_EQ(platform::informationValue<std::string>(*information, "CFBundleShortVersionString"),
              KELO_PACKAGE_VERSION);
}

TEST(Tree, RunsFromWhereItWasUnpacked) {
    const auto& tree = Packages::ofThisBuild().tree();
    const std::string home = "HOME=" + quoted(tree.parent_path()) + " ";
    const auto help = runCommand(home + quoted(tree / "bin/kelo") + " --help");
    EXPECT_EQ(help.status, 0) << help.output;
    EXPECT_THAT(help.output, HasSubstr("--hotkey-status"));
    const auto keys = runCommand(home + quoted(tree / "bin/kelo") + " --hotkey-status");
    EXPECT_EQ(keys.status, 0) << keys.output;
    const auto tool = runCommand(quoted(tree / "bin/kelo-appcast") + " --help");
    EXPECT_EQ(tool.status, 0) << tool.output;
}

// It puts the tree in order when an update was cut off, and then a library of the tree's may be
// missing. It is also what makes it quick.
TEST(Tree, HasACommandThatNeedsNothingButTheLibrariesOfEverySystem) {
    const auto needed =
        runCommand("readelf -d " + quoted(Packages::ofThisBuild().tree() / "bin/kelo") +
                   R"( | sed -n 's/.*(NEEDED).*\[\(.*\)\.so.*\]/\1/p' | sort | tr '\n' ' ')");
    EXPECT_EQ(needed.output, "libc libgcc_s libgio-2.0 libglib-2.0 libgobject-2.0 libstdc++ ");
}

TEST(Tree, HasACommandThatTellsTheVersionOfItsInformationDictionary) {
    const auto& tree = Packages::ofThisBuild().tree();
    const auto information = bundle::readInformationFile(tree / "share/kelo/Info.plist");
    ASSERT_TRUE(information);
    const auto text = [&](const char* key) {
        return platform::informationValue<std::string>(*information, key).value_or("?");
    };
    EXPECT_EQ(runCommand(quoted(tree / "bin/kelo") + " --version").output,
              "Kelo " + text("CFBundleShortVersionString") + " (" + text("CFBundleVersion") +
                  ")\n");
}

TEST(Tree, ComesIntoTheMenuAndIsStartedByItsNameUntilItIsRemoved) {
    if (runCommand("command -v dbus-run-session desktop-file-validate gdbus").status != 0)
        GTEST_SKIP() << "there is no session bus to try it on";
    const TreeFolder folder;
    const auto data = folder / "data";
    const auto& tree = Packages::ofThisBuild().tree();
    const std::string environment = "env HOME=" + quoted(tree.parent_path()) +
                                    " XDG_DATA_HOME=" + quoted(data) +
                                    " XDG_CONFIG_HOME=" + quoted(folder / "config") +
                                    " XDG_DATA_DIRS=" + quoted(folder / "system") +
                                    " XDG_RUNTIME_DIR=" + quoted(folder.path()) + " ";
    // The bus starts first, when there is no folder yet that it could watch.
    const auto names = runCommand(
        environment + "dbus-run-session -- sh -c '" + tree.string() +
        "/bin/kelo --integrate && gdbus call --session --dest org.freedesktop.DBus --object-path / "
        "--method org.freedesktop.DBus.ListActivatableNames'");
    EXPECT_THAT(names.output, AllOf(HasSubstr("is in your menu"), HasSubstr("'app.kelo.Kelo'")));
    const auto entry = data / "applications/app.kelo.Kelo.desktop";
    const auto valid = runCommand("desktop-file-validate " + quoted(entry));
    EXPECT_EQ(valid.output, "");
    EXPECT_THAT(readFile(entry), AllOf(HasSubstr("\nDBusActivatable=true\n"),
                                       HasSubstr("\nExec=\"" + (tree / "bin/kelo").string())));
    EXPECT_TRUE(fs::exists(data / "icons/hicolor/scalable/apps/app.kelo.Kelo.svg"));
    const auto removed = runCommand(environment + quoted(tree / "bin/kelo") + " --remove");
    EXPECT_EQ(removed.status, 0) << removed.output;
    EXPECT_TRUE(fs::is_empty(data));
}

TEST(Tree, SpeaksTheUsersLanguageWhereverItWasUnpacked) {
    test::LocaleFolder locales;
    locales.add("de_DE");
    if (!locales.holds("de_DE"))
        GTEST_SKIP() << "this machine cannot make locales";
    const auto& tree = Packages::ofThisBuild().tree();
    const std::string german =
        "HOME=" + quoted(tree.parent_path()) +
        " LANGUAGE= LC_ALL=de_DE.UTF-8 LOCPATH=" + quoted(fs::path(locales.path())) + " ";
    const auto help = runCommand(german + quoted(tree / "bin/kelo") + " --help");
    EXPECT_THAT(help.output, HasSubstr("Die Einstellungen öffnen"));
    // A tool of the publisher, whose output goes into scripts and logs.
    const auto tool = runCommand(german + quoted(tree / "bin/kelo-appcast") + " --help");
    EXPECT_THAT(tool.output, HasSubstr("Usage:"));
}

} // namespace kelo::tests
