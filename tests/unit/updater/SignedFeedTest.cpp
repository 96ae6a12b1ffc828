#include "updater/archive/SignedFeed.h"

#include "unit/updater/UpdaterFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using updater::UpdateChoice;

/// A copy that takes a feed only if its publisher signed it.
class SignedFeed : public UpdaterFixture {
protected:
    SignedFeed() {
        dictionary["SURequireSignedFeed"] = true;
        dictionary["SUEnableAutomaticChecks"] = false;
    }

    static std::string withSignatures(const std::string& feed,
                                      const std::vector<const Publisher*>& signers) {
        std::vector<std::string> signatures;
        signatures.reserve(signers.size());
        for (const auto* signer : signers)
            signatures.push_back(signer->sign(feed));
        return feed + updater::signatureLines(feed.size(), signatures);
    }

    std::string signedFeed(std::string_view more = "") const {
        return withSignatures(feedOf(signedRelease("1.1", more)), {&publisher});
    }

    void serve(const std::string& feed) { transport.replies[feedAddress] = bytesOf(feed); }

    void expectRefused(const std::string& feed) {
        serve(feed);
        check();
        EXPECT_THAT(user.sentence, HasSubstr("list of updates comes from Kelo's publisher"))
            << lastShown();
        acknowledge();
        EXPECT_FALSE(user.offer);
    }

    const Publisher stranger;
};

} // namespace

TEST_F(SignedFeed, OfThePublisherIsRead) {
    serve(signedFeed());
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1");
}

TEST_F(SignedFeed, WithAnotherKeysSignatureBesideIsRead) {
    serve(withSignatures(feedOf(signedRelease("1.1")), {&stranger, &publisher}));
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1");
}

TEST_F(SignedFeed, IsRequiredOnlyWhereTheBuildSaysSo) {
    dictionary.erase("SURequireSignedFeed");
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1");
}

TEST_F(SignedFeed, WithoutASignatureIsRefused) {
    expectRefused(feedOf(signedRelease("1.1")));
}

TEST_F(SignedFeed, OfAStrangerIsRefused) {
    expectRefused(withSignatures(feedOf(signedRelease("1.1")), {&stranger}));
}

TEST_F(SignedFeed, WithoutAKeyInTheCopyIsRefused) {
    dictionary.erase("SUPublicEDKey");
    expectRefused(signedFeed());
}

TEST_F(SignedFeed, ThatWasChangedInOneByteIsRefused) {
    const std::string feed = signedFeed("<sparkle:channel>beta</sparkle:channel>");
    for (const char* word : {"beta", "1.1", "kelo.tar.zst", "edSignature: ", "length: "}) {
        std::string changed = feed;
        changed[changed.rfind(word) + std::string_view(word).size() - 1] ^= 1;
        expectRefused(changed);
    }
}

TEST_F(SignedFeed, CutOffAtAnyPlaceIsRefused) {
    const std::string feed = signedFeed();
    for (std::size_t size = 0; size + 2 < feed.size(); size += 7)
        EXPECT_FALSE(updater::signaturesOf(bytesOf(feed.substr(0, size)))) << size;
}

// Nothing behind the signed part is read, wherever its signatures were put.
TEST_F(SignedFeed, IsReadOnlyAsFarAsItIsSigned) {
    const std::string feed = signedFeed();
    EXPECT_FALSE(updater::signaturesOf(bytesOf(feed + "<item/>")));
    const auto lines = feed.substr(feed.rfind("<!--"));
    expectRefused(feed + feedOf(signedRelease("9.9")) + lines);
    const auto end = feed.rfind("</channel>");
    expectRefused(feed.substr(0, end) + signedRelease("9.9") + feed.substr(end));
}

TEST_F(SignedFeed, IsHandedOnWithoutWhatStandsBehindIt) {
    const std::string text = feedOf(signedRelease("1.1"));
    const Bytes whole = bytesOf(withSignatures(text, {&publisher}) + "<more/><!-- more -->");
    const auto key = updater::parsePublicKey(publisher.publicKey());
    EXPECT_EQ(textOf(updater::verifiedPart(whole, key)), text);
}

TEST_F(SignedFeed, ShowsNoNotesFromOutsideOfIt) {
    serve(signedFeed("<sparkle:releaseNotesLink>https://updates.example.com/notes.txt"
                     "</sparkle:releaseNotesLink>"));
    transport.replies["https://updates.example.com/notes.txt"] = bytesOf("Somebody's words");
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1");
    EXPECT_TRUE(user.offer->releaseNotes.empty());
}

} // namespace kelo::test
