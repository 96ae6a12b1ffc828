#include "publisher/Releases.h"

#include "base/Base64.h"
#include "component/installer/Trees.h"
#include "publisher/Failure.h"

#include <gmock/gmock.h>

namespace kelo::publisher {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tests::TreeFolder;

/// Packages of which only the file, the build number and the public key matter.
class Releases : public testing::Test {
protected:
    Release release(const std::string& build, const SigningKey& carried,
                    const std::string& shown = "") const {
        Release made;
        made.path = folder / ("kelo-1." + build + ".tar.zst");
        tests::writeFile(made.path, "the bytes of " + build);
        made.package.publicKey = base64Encode(carried.publicKey());
        made.item.version = build;
        made.item.shortVersion = shown.empty() ? "1." + build : shown;
        made.item.fileName = made.path.filename();
        made.item.url = "https://kelo.example/get/" + made.item.fileName;
        made.item.system = "linux";
        return made;
    }

    static bool isSignedWith(const SigningKey& key, const Release& release) {
        return updater::verifies(key.publicKey(), *updater::parseSignature(release.item.signature),
                                 bytesOf(tests::readFile(release.path)));
    }

    static std::vector<OldItem> published(const std::vector<Release>& releases) {
        std::vector<OldItem> items;
        for (const auto& each : releases)
            items.push_back({each.item.fileName, each.item.version, each.item.shortVersion,
                             each.item.signature});
        return items;
    }

    static void expectRefused(std::vector<Release> releases, const ReleaseKeys& keys,
                              const std::vector<OldItem>& old, const std::string& because) {
        try {
            signReleases(releases, keys, old, false);
            FAIL() << "it was signed";
        } catch (const Failure& failure) {
            EXPECT_THAT(failure.what(), HasSubstr(because));
        }
    }

    TreeFolder folder;
    ReleaseKeys keys{SigningKey::generate()};
};

/// The same while the key is being changed.
class NextKey : public Releases {
protected:
    NextKey() { keys.next = SigningKey::generate(); }
    const SigningKey& present = keys.current;
    const SigningKey& next() const { return *keys.next; }
};

} // namespace

TEST_F(Releases, AreSignedWithTheOneKey) {
    std::vector releases{release("11", keys.current), release("10", keys.current)};
    signReleases(releases, keys, {}, false);
    for (const auto& each : releases) {
        EXPECT_TRUE(isSignedWith(keys.current, each));
        EXPECT_EQ(each.item.length, 15U);
        EXPECT_EQ(each.item.minimumUpdateVersion, "");
    }
}

TEST_F(Releases, ThatWereNotChangedKeepTheirSignature) {
    std::vector releases{release("11", keys.current)};
    signReleases(releases, keys, {}, false);
    std::vector again{release("12", keys.current), release("11", keys.current)};
    signReleases(again, keys, published(releases), false);
    EXPECT_EQ(again[1].item.signature, releases[0].item.signature);
}

TEST_F(Releases, ThatWereChangedUnderTheirNamesAreRefusedUnlessTold) {
    std::vector releases{release("11", keys.current)};
    signReleases(releases, keys, {}, false);
    const auto old = published(releases);
    tests::writeFile(releases[0].path, "the bytes of 1l");
    expectRefused(releases, keys, old, "not what was published under that name");
    signReleases(releases, keys, old, true);
    EXPECT_TRUE(isSignedWith(keys.current, releases[0]));
}

TEST_F(Releases, BuiltForAThirdKeyAreRefused) {
    const std::vector releases{release("11", SigningKey::generate())};
    expectRefused(releases, keys, {}, "another public key");
    keys.next = SigningKey::generate();
    expectRefused(releases, keys, {}, "another public key");
}

TEST_F(Releases, BuiltWithoutUpdatesMayBePublished) {
    std::vector releases{release("11", keys.current)};
    releases[0].package.publicKey = "";
    signReleases(releases, keys, {}, false);
    EXPECT_TRUE(isSignedWith(keys.current, releases[0]));
}

TEST_F(Releases, WhoseBuildNumbersRepeatOrFallAreRemarkedOn) {
    const auto remarks = [&](const std::vector<Release>& releases, std::vector<OldItem> old = {}) {
        return remarksOn(releases, old, keys);
    };
    EXPECT_THAT(remarks({release("11", keys.current, "1.1"), release("10", keys.current, "1.0")}),
                IsEmpty());
    auto package = release("11", keys.current, "1.1");
    package.item.fileName = "kelo-1.1.deb";
    EXPECT_THAT(remarks({release("11", keys.current, "1.1"), package}), IsEmpty());
    package.item.shortVersion = "1.2";
    EXPECT_THAT(remarks({release("11", keys.current, "1.1"), package}),
                ElementsAre(HasSubstr("build number repeats")));
    EXPECT_THAT(remarks({release("11", keys.current, "1.1"), release("10", keys.current, "1.2")}),
                ElementsAre(HasSubstr("build number falls")));
    EXPECT_THAT(remarks({release("11", keys.current)}, {{"kelo-1.12.tar.zst", "12", "1.12", ""}}),
                ElementsAre(HasSubstr("the feed had 12 already")));
    EXPECT_THAT(remarks({release("11", keys.current)}, {{"kelo-1.11.tar.zst", "11", "1.11", ""},
                                                        {"kelo-1.12.tar.zst", "12", "1.12", ""}}),
                IsEmpty())
        << "it was there before";
    EXPECT_THAT(remarks({release("11", keys.current)}, {{"kelo-1.1.tar.zst", "11", "1.1", ""}}),
                ElementsAre(HasSubstr("another version in the feed")));
    EXPECT_THAT(remarks({release("11", keys.current)}, {{"kelo-1.11.deb", "11", "1.11", ""}}),
                IsEmpty())
        << "another package of the same version";
    EXPECT_THAT(remarks({release("11", keys.current)}, {{"kelo-1.11.deb", "11", "", ""}}),
                IsEmpty())
        << "nobody knows its version";
    EXPECT_THAT(remarks({release("11", keys.current)}, {{"kelo-1.11.tar.zst", "11", "1.11", ""},
                                                        {"kelo-1.1.tar.zst", "11", "1.1", ""}}),
                IsEmpty())
        << "it was remarked on when it was new";
}

TEST_F(Releases, ThatAReaderWouldLeaveOutAreRefused) {
    const auto now = std::chrono::sys_seconds(std::chrono::seconds(1795248000));
    const auto check = [&](const FeedItem& item) {
        requireReadable({item}, writeFeed({item}, "", now));
    };
    std::vector releases{release("11", keys.current)};
    signReleases(releases, keys, {}, false);
    FeedItem item = releases[0].item;
    EXPECT_NO_THROW(check(item));
    for (const auto* url : {"https://kelo.example/get/kelo 1.11.tar.zst", "http://kelo.example/x",
                            "kelo-1.11.tar.zst", "https://kelo.example/get/kelo\n.tar.zst"}) {
        item.url = url;
        EXPECT_THROW(check(item), Failure) << url;
    }
}

TEST_F(Releases, AreWhatTheFeedSaysOfThem) {
    const auto now = std::chrono::sys_seconds(std::chrono::seconds(1795248000));
    std::vector releases{release("11", keys.current), release("10", keys.current)};
    signReleases(releases, keys, {}, false);
    const FeedItem& item = releases[0].item;
    const auto expectRefusal = [&](auto change) {
        FeedItem changed = item;
        change(changed);
        EXPECT_THROW(requireReadable({item}, writeFeed({changed}, "", now)), Failure);
    };
    expectRefusal([&](FeedItem& changed) { changed.version = "10"; });
    expectRefusal([&](FeedItem& changed) { changed.url = releases[1].item.url; });
    expectRefusal([&](FeedItem& changed) { changed.length += 1; });
    expectRefusal([&](FeedItem& changed) { changed.signature = releases[1].item.signature; });
}

TEST_F(NextKey, IsBroughtByAReleaseThatThePresentKeySigned) {
    std::vector releases{release("13", next()), release("12", next()), release("11", present)};
    signReleases(releases, keys, {}, false);
    EXPECT_TRUE(isSignedWith(present, releases[2]));
    EXPECT_TRUE(isSignedWith(present, releases[1]));
    EXPECT_EQ(releases[1].item.minimumUpdateVersion, "");
    EXPECT_TRUE(isSignedWith(next(), releases[0]));
    EXPECT_EQ(releases[0].item.minimumUpdateVersion, "12");
    EXPECT_THAT(remarksOn(releases, {}, keys), IsEmpty());
}

TEST_F(NextKey, IsBroughtByTheFirstOfTheReleasesThatThePresentKeySigned) {
    std::vector published12{release("12", next())};
    signReleases(published12, keys, {}, false);
    ASSERT_TRUE(isSignedWith(present, published12[0]));
    std::vector releases{release("13", next()), release("12", next()), release("11", next())};
    signReleases(releases, keys, published(published12), false);
    EXPECT_TRUE(isSignedWith(present, releases[1]));
    EXPECT_TRUE(isSignedWith(present, releases[2]));
    EXPECT_EQ(releases[0].item.minimumUpdateVersion, "11");
}

TEST_F(NextKey, IsBroughtByAllPackagesOfThatRelease) {
    auto package = release("12", next());
    package.path = folder / "kelo-1.12.deb";
    tests::writeFile(package.path, "a package");
    package.item.fileName = "kelo-1.12.deb";
    std::vector releases{release("12", next()), package};
    signReleases(releases, keys, {}, false);
    EXPECT_TRUE(isSignedWith(present, releases[0]));
    EXPECT_TRUE(isSignedWith(present, releases[1]));
}

TEST_F(NextKey, LeavesASignatureOfTheNextKeyWhenTheFirstReleaseIsGone) {
    std::vector releases{release("13", next()), release("12", next())};
    signReleases(releases, keys, {}, false);
    const auto old = published(releases);
    std::vector later{release("13", next())};
    signReleases(later, keys, old, false);
    EXPECT_TRUE(isSignedWith(next(), later[0]));
    EXPECT_THAT(remarksOn(later, old, keys), ElementsAre(HasSubstr("no copy comes over")));
}

TEST_F(NextKey, ThatNoReleaseBringsIsRemarkedOn) {
    std::vector releases{release("11", present)};
    signReleases(releases, keys, {}, false);
    EXPECT_THAT(remarksOn(releases, {}, keys), ElementsAre(HasSubstr("no copy comes over")));
}

} // namespace kelo::publisher
