#include "component/packaging/Packages.h"

#include "bundle/InformationFile.h"
#include "updater/UpdateSelection.h"
#include "updater/appcast/Appcast.h"
#include "updater/archive/Signature.h"
#include "updater/archive/SignedFeed.h"
#include "updater/error/UpdateError.h"
#include "updater/install/DebianPackage.h"
#include "updater/install/TreeInstaller.h"
#include "updater/tree/InstallRecovery.h"
#include "updater/tree/InstalledCopy.h"

#include <gmock/gmock.h>

#include <gnu/libc-version.h>
#include <sys/utsname.h>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

std::string quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

/// Follows docs/RELEASING.md with the packages of this build. A release of another version is the
/// same tree with another number.
class Release : public testing::Test {
protected:
    Release() {
        EXPECT_EQ(runCommand("mkdir " + quoted(releases)).status, 0);
        publicKey = makeKey(key);
    }

    void stamp(const fs::path& tree, const std::string& version, const std::string& build) const {
        fs::create_directories(tree.parent_path());
        fs::copy(Packages::ofThisBuild().tree(), tree, fs::copy_options::recursive);
        writeFile(tree / "share/kelo/Info.plist",
                  "<plist version=\"1.0\"><dict><key>CFBundleShortVersionString</key><string>" +
                      version + "</string><key>CFBundleVersion</key><string>" + build +
                      "</string><key>SUFeedURL</key><string>https://kelo.example/get/appcast.xml"
                      "</string><key>SURequireSignedFeed</key><true/><key>SUPublicEDKey</key>"
                      "<string>" +
                      publicKey + "</string></dict></plist>");
    }

    void pack(const std::string& version, const std::string& build) const {
        stamp(folder / ("build/kelo-" + version), version, build);
        packAgain(version);
    }

    void packAgain(const std::string& version) const {
        const std::string name = "kelo-" + version;
        const auto packed = runCommand("tar --zstd -cf " + quoted(releases / (name + ".tar.zst")) +
                                       " -C " + quoted(folder / "build") + " " + name);
        EXPECT_EQ(packed.status, 0) << packed.output;
    }

    Outcome generate(const std::string& options = "") const {
        return runCommand(quoted(tool) + " generate --key " + quoted(key) + " " + options + " " +
                          quoted(releases));
    }

    /// Makes a key, and returns its public half.
    std::string makeKey(const fs::path& file) const {
        const auto made =
            runCommand(quoted(tool) + " keygen --key " + quoted(file) + " 2>/dev/null");
        EXPECT_EQ(made.status, 0);
        return made.output.substr(0, made.output.find('\n'));
    }

    /// The version that a copy of this version and with this key would take, and could verify.
    std::string takenBy(const std::string& build, const std::string& ownKey) const {
        const auto parsedKey = updater::parsePublicKey(ownKey);
        const auto bytes = bytesOf(readFile(feed));
        updater::SelectionRules rules;
        rules.installedVersion = build;
        utsname names{};
        ::uname(&names);
        rules.system.architecture = names.machine;
        const auto selection = updater::selectUpdate(
            updater::parseAppcast(updater::verifiedPart(bytes, parsedKey)), rules);
        if (!selection.update)
            return "";
        const auto& enclosure = *selection.update->item.enclosure;
        const std::string path = enclosure.url.path();
        const auto archive = openForReading(releases / path.substr(path.rfind('/') + 1));
        EXPECT_TRUE(updater::verifiesFile(*parsedKey,
                                          *updater::parseSignature(*enclosure.signature),
                                          archive.get(), *enclosure.length));
        return selection.update->item.version;
    }

    Outcome verify(const std::string& fileName) const {
        return runCommand(quoted(tool) + " verify --public-key " + publicKey + " " + quoted(feed) +
                          " " + quoted(releases / fileName));
    }

    updater::AppcastItem newestItem() const {
        return updater::parseAppcast(bytesOf(readFile(feed))).items.at(0);
    }

    fs::path tool = Packages::ofThisBuild().tree() / "bin/kelo-appcast";
    TreeFolder folder;
    fs::path releases = folder / "releases";
    fs::path feed = releases / "appcast.xml";
    fs::path key = folder / "signing.key";
    std::string publicKey;
};

} // namespace

TEST_F(Release, GoesFromAKeyToAnInstalledUpdate) {
    const fs::path home = folder / "home";
    const fs::path installed = home / "Kelo";
    stamp(installed, "1.0", "10");
    pack("1.0", "10");
    pack("1.1", "11");
    writeFile(releases / "kelo-1.1.md", "# What is new\n\n- Everything");
    const auto generated = generate();
    ASSERT_EQ(generated.status, 0) << generated.output;
    for (const auto* name : {"kelo-1.0.tar.zst", "kelo-1.1.tar.zst"})
        EXPECT_EQ(verify(name).status, 0);

    const auto item = newestItem();
    EXPECT_EQ(item.version, "11");
    EXPECT_EQ(item.displayVersion(), "1.1");
    EXPECT_EQ(item.descriptionFormat, updater::NotesFormat::markdown);
    EXPECT_EQ(item.enclosure->url.absoluteString(), "https://kelo.example/get/kelo-1.1.tar.zst");
    const auto archive = openForReading(releases / "kelo-1.1.tar.zst");
    ASSERT_TRUE(updater::verifiesFile(*updater::parsePublicKey(publicKey),
                                      *updater::parseSignature(*item.enclosure->signature),
                                      archive.get(), *item.enclosure->length));

    const auto copy = updater::findInstalledCopy(installed / "bin/kelo", home);
    ASSERT_EQ(copy.owner, updater::CopyOwner::user);
    {
        updater::TreeInstaller installer(copy.root);
        installer.stage(archive.get(), item.version);
        installer.install();
    }
    const auto started =
        runCommand("HOME=" + quoted(home) + " " + quoted(installed / "bin/kelo") + " --help");
    EXPECT_EQ(started.status, 0) << started.output;
    EXPECT_EQ(platform::informationValue<std::string>(
                  *bundle::readInformationFile(installed / "share/kelo/Info.plist"),
                  "CFBundleShortVersionString"),
              "1.1");
    updater::TreeStart(installed).confirm();
    const Contents released = contentsOf(folder / "build/kelo-1.1");
    const Contents found = contentsOf(home);
    EXPECT_EQ(found.size(), released.size());
    for (const auto& [path, content] : found)
        EXPECT_TRUE(path.starts_with("Kelo/") && released.contains(path.substr(5)) &&
                    released.at(path.substr(5)) == content)
            << path;
}

TEST_F(Release, OfBothPackagesPutsTheTreeFirst) {
    pack("1.1", "11");
    fs::copy_file(Packages::ofThisBuild().package(), releases / "kelo-1.1.deb");
    const auto generated = runCommand(quoted(tool) + " generate --url https://kelo.example/get" +
                                      " --key " + quoted(key) + " " + quoted(releases));
    ASSERT_EQ(generated.status, 0) << generated.output;
    EXPECT_EQ(verify("kelo-1.1.deb").status, 0);
    EXPECT_EQ(verify("kelo-1.1.tar.zst").status, 0);
    EXPECT_EQ(newestItem().enclosure->url.path(), "/get/kelo-1.1.tar.zst");
    EXPECT_TRUE(newestItem().enclosure->system->starts_with("linux"));
}

TEST_F(Release, SaysTheSameOfThePackagesForSeveralSystems) {
    const auto name = Packages::ofThisBuild().package().filename();
    fs::copy_file(Packages::ofThisBuild().package(), releases / name);
    writeFile(releases / "kelo-" KELO_PACKAGE_VERSION ".txt", "Everything is new.");
    const auto generated = runCommand(quoted(tool) + " generate --url https://kelo.example/get" +
                                      " --key " + quoted(key) + " " + quoted(releases));
    ASSERT_EQ(generated.status, 0) << generated.output;
    EXPECT_EQ(newestItem().enclosure->url.path(), "/get/" + name.string());
    EXPECT_EQ(newestItem().description, "Everything is new.");
    EXPECT_EQ(newestItem().minimumSystemVersion, gnu_get_libc_version());
}

TEST_F(Release, SaysInItsPackageWhatItIs) {
    const auto file = openForReading(Packages::ofThisBuild().package());
    const auto found = updater::readDebianPackage(file.get());
    EXPECT_EQ(found.name, "kelo");
    EXPECT_EQ(found.architecture + "\n", runCommand("dpkg --print-architecture").output);
    EXPECT_EQ(found.version, platform::informationValue<std::string>(
                                 *bundle::readInformationFile(Packages::ofThisBuild().tree() /
                                                              "share/kelo/Info.plist"),
                                 "CFBundleVersion"));
}

TEST_F(Release, KeepsTheDateAndWhatWasAddedByHand) {
    pack("1.1", "11");
    ASSERT_EQ(generate().status, 0);
    std::string text = readFile(feed);
    const auto date = text.find("<pubDate>");
    const std::string oldDate = "<pubDate>Mon, 02 Feb 2026 10:00:00 +0000</pubDate>";
    text.replace(date, text.find("</pubDate>") + 10 - date,
                 oldDate + "<sparkle:channel>beta</sparkle:channel>");
    writeFile(feed, text);
    pack("1.2", "12");
    ASSERT_EQ(generate().status, 0);
    const auto items = updater::parseAppcast(bytesOf(readFile(feed))).items;
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].version, "12");
    EXPECT_EQ(items[0].channel, "");
    EXPECT_EQ(items[1].channel, "beta");
    EXPECT_THAT(readFile(feed), HasSubstr(oldDate));
}

// The road in "Another key" of that page.
TEST_F(Release, BringsTheNextKeyToEveryCopy) {
    const std::string oldKey = publicKey;
    const fs::path nextFile = folder / "next.key";
    const std::string newKey = makeKey(nextFile);
    pack("1.0", "10");
    ASSERT_EQ(generate().status, 0);

    publicKey = newKey;
    pack("1.1", "11");
    auto generated = generate("--next-key " + quoted(nextFile));
    ASSERT_EQ(generated.status, 0) << generated.output;
    EXPECT_EQ(takenBy("9", oldKey), "11");

    pack("1.2", "12");
    generated = generate("--next-key " + quoted(nextFile));
    ASSERT_EQ(generated.status, 0) << generated.output;
    EXPECT_EQ(takenBy("9", oldKey), "11") << "a copy that stayed behind";
    EXPECT_EQ(takenBy("11", newKey), "12");
    EXPECT_EQ(verify("kelo-1.2.tar.zst").status, 0);

    key = nextFile;
    fs::remove(releases / "kelo-1.0.tar.zst");
    fs::remove(releases / "kelo-1.1.tar.zst");
    pack("1.3", "13");
    generated = generate();
    ASSERT_EQ(generated.status, 0) << generated.output;
    EXPECT_EQ(takenBy("11", newKey), "13");
    EXPECT_THROW(takenBy("9", oldKey), updater::UpdateError) << "it was given up";
}

TEST_F(Release, WhoseFeedWasChangedByHandIsRefusedUntilItIsGeneratedAgain) {
    pack("1.1", "11");
    ASSERT_EQ(generate().status, 0);
    std::string text = readFile(feed);
    text.replace(text.find("<pubDate>"), 0, "<sparkle:channel>beta</sparkle:channel>");
    writeFile(feed, text);
    EXPECT_THAT(verify("kelo-1.1.tar.zst").output, HasSubstr("changed by hand"));
    ASSERT_EQ(generate().status, 0);
    EXPECT_EQ(verify("kelo-1.1.tar.zst").status, 0);
    EXPECT_EQ(newestItem().channel, "beta");
}

TEST_F(Release, ThatChangedUnderItsNameIsSignedAgainOnlyWhenTold) {
    pack("1.1", "11");
    ASSERT_EQ(generate().status, 0);
    const std::string before = readFile(feed);
    writeFile(folder / "build/kelo-1.1/share/doc/more.txt", "more");
    packAgain("1.1");
    const auto outcome = generate();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("not what was published under that name"));
    EXPECT_EQ(readFile(feed), before);
    EXPECT_EQ(generate("--replace").status, 0);
    EXPECT_EQ(verify("kelo-1.1.tar.zst").status, 0);
}

TEST_F(Release, ThatCopiesWouldLeaveOutIsNotPublished) {
    pack("1.1", "11");
    fs::rename(releases / "kelo-1.1.tar.zst", releases / "kelo 1.1.tar.zst");
    const auto outcome = generate();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("would leave"));
    EXPECT_FALSE(fs::exists(feed));
}

TEST_F(Release, ThatWasChangedAfterwardsDoesNotVerify) {
    pack("1.1", "11");
    ASSERT_EQ(generate().status, 0);
    const fs::path archive = releases / "kelo-1.1.tar.zst";
    std::string bytes = readFile(archive);
    bytes[bytes.size() / 2] ^= 1;
    writeFile(archive, bytes);
    auto outcome = verify("kelo-1.1.tar.zst");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("is not valid"));
    writeFile(archive, bytes + "x");
    outcome = verify("kelo-1.1.tar.zst");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("the feed says"));
}

TEST_F(Release, BuiltForAnotherKeyIsNotPublished) {
    publicKey = "rhHib+w769W2/6/t+oM1ZxgjBB93BfBKMLO0Qo1etQs=";
    pack("1.1", "11");
    const auto outcome = generate();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.output, HasSubstr("built with another public key"));
    EXPECT_FALSE(fs::exists(feed));
}

} // namespace kelo::tests
