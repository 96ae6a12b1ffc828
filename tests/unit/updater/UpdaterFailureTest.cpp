#include "unit/updater/UpdaterFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using updater::UpdateChoice;

/// What the user sees when a check fails, and what is left on the disk.
class UpdaterFailure : public UpdaterFixture {
protected:
    void expectFailure(const std::string& sentence) {
        EXPECT_EQ(lastShown(), "failure");
        EXPECT_THAT(user.sentence, HasSubstr(sentence));
        EXPECT_TRUE(installer.prepared.empty());
        EXPECT_THAT(leftovers(), IsEmpty());
        EXPECT_FALSE(log.empty()) << "the log has the cause";
        acknowledge();
        EXPECT_FALSE(user.open);
    }
    void install(const std::string& items) {
        publish(items);
        check();
        choose(UpdateChoice::install);
    }
};

TEST_F(UpdaterFailure, FeedThatCannotBeFetchedIsAFailure) {
    transport.replies.erase(feedAddress);
    check();
    expectFailure("No such address.");
}

TEST_F(UpdaterFailure, FeedThatIsNoneIsAFailure) {
    transport.replies[feedAddress] = bytesOf("<html/>");
    check();
    expectFailure("The list of updates could not be read.");
}

TEST_F(UpdaterFailure, FeedIsFetchedWithItsLimit) {
    check();
    EXPECT_EQ(transport.limits, std::vector<std::size_t>{updater::appcastLimit});
}

TEST_F(UpdaterFailure, ArchiveThatCannotBeFetchedIsAFailure) {
    transport.replies.erase(archiveAddress);
    check();
    choose(UpdateChoice::install);
    expectFailure("No such address.");
}

TEST_F(UpdaterFailure, DownloadThatBreaksOffIsAFailureAndDeleted) {
    transport.failAtEnd = transport.failure;
    check();
    choose(UpdateChoice::install);
    expectFailure("No such address.");
}

TEST_F(UpdaterFailure, WrongKeyIsRefused) {
    dictionary["SUPublicEDKey"] = Publisher().publicKey();
    check();
    choose(UpdateChoice::install);
    expectFailure("Nothing shows that this update comes from Kelo's publisher");
}

TEST_F(UpdaterFailure, SwappedArchiveIsRefused) {
    std::string swapped = archive;
    swapped[3] ^= 1;
    transport.replies[archiveAddress] = bytesOf(swapped);
    check();
    choose(UpdateChoice::install);
    expectFailure("Nothing shows that this update comes from Kelo's publisher");
}

TEST_F(UpdaterFailure, MissingKeyIsRefusedBeforeAnythingIsFetched) {
    dictionary.erase("SUPublicEDKey");
    check();
    choose(UpdateChoice::install);
    EXPECT_THAT(transport.requests, ElementsAre(feedAddress));
    expectFailure("has no key to verify updates with");
}

TEST_F(UpdaterFailure, MissingSignatureIsRefusedBeforeAnythingIsFetched) {
    install(release("1.1", "", "length=\"26\""));
    EXPECT_THAT(transport.requests, ElementsAre(feedAddress));
    expectFailure("Nothing shows that this update comes from");
}

TEST_F(UpdaterFailure, MalformedSignatureIsRefusedBeforeAnythingIsFetched) {
    install(release("1.1", "", "length=\"26\" sparkle:edSignature=\"Zm9v\""));
    EXPECT_THAT(transport.requests, ElementsAre(feedAddress));
    expectFailure("Nothing shows that this update comes from");
}

TEST_F(UpdaterFailure, MissingLengthIsRefusedBeforeAnythingIsFetched) {
    install(release("1.1", "", "sparkle:edSignature=\"" + publisher.sign(archive) + "\""));
    EXPECT_THAT(transport.requests, ElementsAre(feedAddress));
    expectFailure("not the file that was announced");
}

TEST_F(UpdaterFailure, EnormousLengthIsRefusedBeforeAnythingIsFetched) {
    install(release("1.1", "",
                    "length=\"18446744073709551615\" sparkle:edSignature=\"" +
                        publisher.sign(archive) + "\""));
    EXPECT_THAT(transport.requests, ElementsAre(feedAddress));
    expectFailure("larger than any release");
}

TEST_F(UpdaterFailure, ShorterArchiveIsRefused) {
    transport.replies[archiveAddress] = bytesOf(archive.substr(0, 20));
    check();
    choose(UpdateChoice::install);
    expectFailure("not the file that was announced, so it was deleted");
}

TEST_F(UpdaterFailure, LongerArchiveIsRefusedAtTheFirstByteTooMany) {
    transport.replies[archiveAddress] = bytesOf(archive + std::string(1000, 'x'));
    check();
    choose(UpdateChoice::install);
    EXPECT_LE(user.received.back(), archive.size());
    expectFailure("not the file that was announced, so it was deleted");
}

TEST_F(UpdaterFailure, OtherLengthOnTheServerIsRefusedAtOnce) {
    transport.announced = 27;
    check();
    choose(UpdateChoice::install);
    EXPECT_THAT(user.received, ElementsAre(0, 0)) << "not a byte was taken";
    expectFailure("not the file that was announced");
}

TEST_F(UpdaterFailure, NoPlaceToKeepTheDownloadIsAFailure) {
    std::filesystem::create_directory_symlink("/tmp", folder.path() / "updates");
    check();
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "failure");
    EXPECT_THAT(user.sentence, HasSubstr("no safe place"));
}

TEST_F(UpdaterFailure, FailureOfTheInstallerIsShown) {
    installer.failure = std::make_exception_ptr(updater::UpdateError(
        updater::UpdateErrorKind::installing, "The folder cannot be written to."));
    check();
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "failure");
    EXPECT_EQ(user.sentence, "The folder cannot be written to.");
    EXPECT_THAT(leftovers(), IsEmpty());
}

} // namespace kelo::test
