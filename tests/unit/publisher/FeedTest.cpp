#include "publisher/Feed.h"
#include "publisher/Failure.h"
#include "updater/appcast/Appcast.h"

#include <gmock/gmock.h>

namespace kelo::publisher {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::chrono::sys_seconds now{std::chrono::seconds(1795248000)};

FeedItem itemOf(const std::string& version) {
    FeedItem item;
    item.version = version;
    item.shortVersion = "1." + version;
    item.system = "linux-x86_64";
    item.fileName = "kelo-1." + version + ".tar.zst";
    item.url = "https://kelo.example/get/" + item.fileName;
    item.signature = "c2lnbmVk";
    item.length = 1234;
    return item;
}

updater::Appcast read(const std::string& feed) {
    return updater::parseAppcast(bytesOf(feed));
}

} // namespace

TEST(Feed, IsReadBackAsItWasMeant) {
    FeedItem item = itemOf("11");
    item.pageUrl = "https://kelo.example/page?a=1&b=2";
    item.notes = Notes{"# <New> & ]]> \"bold\"", NotesForm::markdown};
    const auto appcast = read(writeFeed({item, itemOf("10")}, "", now));
    EXPECT_THAT(appcast.problems, IsEmpty());
    ASSERT_EQ(appcast.items.size(), 2U);
    const auto& first = appcast.items[0];
    EXPECT_EQ(first.version, "11");
    EXPECT_EQ(first.shortVersion, "1.11");
    EXPECT_EQ(first.published, now);
    EXPECT_EQ(first.link->absoluteString(), item.pageUrl);
    EXPECT_EQ(first.description, item.notes->text);
    EXPECT_EQ(first.descriptionFormat, updater::NotesFormat::markdown);
    EXPECT_EQ(first.enclosure->url.absoluteString(), item.url);
    EXPECT_EQ(first.enclosure->length, 1234U);
    EXPECT_EQ(first.enclosure->signature, "c2lnbmVk");
    EXPECT_EQ(first.enclosure->system, "linux-x86_64");
    EXPECT_EQ(appcast.items[1].version, "10");
}

TEST(Feed, NamesTheLeastSystemThatAPackageNeeds) {
    FeedItem item = itemOf("11");
    item.minimumSystem = "2.36";
    const auto appcast = read(writeFeed({item, itemOf("10")}, "", now));
    ASSERT_EQ(appcast.items.size(), 2U);
    EXPECT_EQ(appcast.items[0].minimumSystemVersion, "2.36");
    EXPECT_EQ(appcast.items[1].minimumSystemVersion, "");
}

TEST(Feed, TakesTheLeastSystemFromThePackageWhereThatNamesIt) {
    FeedItem item = itemOf("11");
    item.minimumSystem = "2.41";
    std::string old = writeFeed({item}, "", now);
    item.minimumSystem = "2.36";
    const auto again = writeFeed({item}, old, now);
    EXPECT_EQ(read(again).items.at(0).minimumSystemVersion, "2.36");
    EXPECT_EQ(again.find("minimumSystemVersion"), again.rfind("<sparkle:minimumSystemVersion") + 9);
    item.minimumSystem = "";
    EXPECT_EQ(read(writeFeed({item}, old, now)).items.at(0).minimumSystemVersion, "2.41");
}

TEST(Feed, KeepsDateLinkNotesAndHandWrittenElementsOfAnItem) {
    FeedItem first = itemOf("10");
    first.pageUrl = "https://kelo.example/page";
    first.notes = Notes{"Old notes", NotesForm::plainText};
    std::string old = writeFeed({first}, "", now);
    old.insert(old.find("<title>Version"),
               "<sparkle:criticalUpdate sparkle:version=\"9\"/><custom>kept</custom>");
    const auto later = now + std::chrono::hours(24);
    const std::string feed = writeFeed({itemOf("11"), itemOf("10")}, old, later);
    const auto appcast = read(feed);
    ASSERT_EQ(appcast.items.size(), 2U);
    EXPECT_EQ(appcast.items[0].published, later);
    EXPECT_FALSE(appcast.items[0].critical);
    EXPECT_EQ(appcast.items[1].published, now);
    EXPECT_EQ(appcast.items[1].description, "Old notes");
    EXPECT_EQ(appcast.items[1].descriptionFormat, updater::NotesFormat::plainText);
    EXPECT_EQ(appcast.items[1].link->absoluteString(), "https://kelo.example/page");
    ASSERT_TRUE(appcast.items[1].critical);
    EXPECT_EQ(appcast.items[1].critical->belowVersion, "9");
    EXPECT_THAT(feed, HasSubstr("<custom>kept</custom>"));
}

TEST(Feed, WrittenTwiceStaysTheSame) {
    const std::string once = writeFeed({itemOf("10")}, "", now);
    EXPECT_EQ(writeFeed({itemOf("10")}, once, now + std::chrono::hours(1)), once);
}

TEST(Feed, NamesWhatItLeavesOut) {
    const std::string old = writeFeed({itemOf("11"), itemOf("10")}, "", now);
    EXPECT_THAT(droppedFiles({itemOf("11")}, packagesIn(old)), ElementsAre("kelo-1.10.tar.zst"));
    EXPECT_THAT(droppedFiles({itemOf("11")}, packagesIn("")), IsEmpty());
}

TEST(Feed, OffersAReleaseOnlyToTheCopiesThatCanTakeIt) {
    FeedItem item = itemOf("12");
    item.minimumUpdateVersion = "11";
    const std::string feed = writeFeed({item, itemOf("11")}, "", now);
    EXPECT_EQ(read(feed).items[0].minimumUpdateVersion, "11");
    EXPECT_EQ(read(feed).items[1].minimumUpdateVersion, "");
    item.minimumUpdateVersion = "10";
    EXPECT_EQ(read(writeFeed({item}, feed, now)).items[0].minimumUpdateVersion, "10");
}

TEST(Feed, ThatIsDamagedIsNotOverwrittenUnread) {
    EXPECT_THROW(writeFeed({itemOf("11")}, "<rss><channel>", now), Failure);
    EXPECT_THROW(writeFeed({itemOf("11")}, "<html/>", now), Failure);
}

} // namespace kelo::publisher
