#include "unit/updater/Feed.h"
#include "updater/appcast/AppcastReader.h"
#include "updater/error/UpdateError.h"

#include <gtest/gtest.h>

namespace kelo::test {

using updater::Appcast;
using updater::AppcastItem;
using updater::NotesFormat;
using updater::parseAppcast;
using updater::parsePublicationDate;
using updater::UpdateError;
using updater::UpdateErrorKind;

namespace {

AppcastItem only(const Appcast& appcast) {
    EXPECT_EQ(appcast.items.size(), 1u);
    for (const auto& problem : appcast.problems)
        ADD_FAILURE() << problem;
    return appcast.items.empty() ? AppcastItem{"nothing"} : appcast.items.front();
}

AppcastItem only(std::string_view item) {
    return only(appcastOf(item));
}

/// Expects that the only item is left out and that the reason contains this text.
void expectLeftOut(std::string_view item, std::string_view reason) {
    const Appcast appcast = appcastOf(std::string(item) + release("7"));
    ASSERT_EQ(appcast.items.size(), 1u) << item;
    EXPECT_EQ(appcast.items.front().version, "7");
    ASSERT_EQ(appcast.problems.size(), 1u);
    EXPECT_NE(appcast.problems.front().find(reason), std::string::npos) << appcast.problems.front();
}

void expectRefused(std::string_view feed) {
    try {
        parseAppcast(bytesOf(feed));
        ADD_FAILURE() << "taken: " << feed.substr(0, 200);
    } catch (const UpdateError& error) {
        EXPECT_EQ(error.kind(), UpdateErrorKind::feed);
        EXPECT_EQ(error.localizedDescription(),
                  "The list of updates could not be read. Please try again later, or ask Kelo's "
                  "publisher.");
        EXPECT_NE(error.cause(), "");
    }
}

std::string withEnclosure(std::string_view attributes) {
    return "<item><sparkle:version>2</sparkle:version><enclosure " + std::string(attributes) +
           "/></item>";
}

} // namespace

TEST(Appcast, ItemIsReadWithAllThatMatters) {
    const AppcastItem item = only(R"(<item>
        <title> Kelo 1.1 </title>
        <link>https://example.com/kelo</link>
        <pubDate>Sat, 21 Nov 2026 08:30:00 +0100</pubDate>
        <description sparkle:format="markdown"><![CDATA[# New & shiny]]></description>
        <sparkle:releaseNotesLink>https://example.com/notes.md</sparkle:releaseNotesLink>
        <sparkle:version>110</sparkle:version>
        <sparkle:shortVersionString>1.1</sparkle:shortVersionString>
        <sparkle:minimumSystemVersion>2.36</sparkle:minimumSystemVersion>
        <sparkle:maximumSystemVersion>3</sparkle:maximumSystemVersion>
        <sparkle:hardwareRequirements>x86_64, arm64</sparkle:hardwareRequirements>
        <sparkle:minimumAutoupdateVersion>100</sparkle:minimumAutoupdateVersion>
        <sparkle:minimumUpdateVersion>90</sparkle:minimumUpdateVersion>
        <sparkle:ignoreSkippedUpgradesBelowVersion>105</sparkle:ignoreSkippedUpgradesBelowVersion>
        <sparkle:criticalUpdate sparkle:version="95"/>
        <sparkle:informationalUpdate><sparkle:version>80</sparkle:version>
          <sparkle:belowVersion>70</sparkle:belowVersion></sparkle:informationalUpdate>
        <sparkle:channel>beta</sparkle:channel>
        <sparkle:phasedRolloutInterval>86400</sparkle:phasedRolloutInterval>
        <enclosure url="https://example.com/kelo.tar.zst" length="1234" type="application/zstd"
          sparkle:edSignature=" abc= " sparkle:os="linux"/></item>)");
    EXPECT_EQ(item.version, "110");
    EXPECT_EQ(item.shortVersion, "1.1");
    EXPECT_EQ(item.displayVersion(), "1.1");
    EXPECT_EQ(item.title, "Kelo 1.1");
    EXPECT_EQ(item.link->absoluteString(), "https://example.com/kelo");
    EXPECT_EQ(item.published, std::chrono::sys_days(std::chrono::year(2026) / 11 / 21) +
                                  std::chrono::hours(7) + std::chrono::minutes(30));
    EXPECT_EQ(item.description, "# New & shiny");
    EXPECT_EQ(item.descriptionFormat, NotesFormat::markdown);
    EXPECT_EQ(item.releaseNotesLink->absoluteString(), "https://example.com/notes.md");
    EXPECT_EQ(item.minimumSystemVersion, "2.36");
    EXPECT_EQ(item.maximumSystemVersion, "3");
    EXPECT_EQ(item.hardwareRequirements, (std::vector<std::string>{"x86_64", "arm64"}));
    EXPECT_EQ(item.minimumAutoupdateVersion, "100");
    EXPECT_EQ(item.minimumUpdateVersion, "90");
    EXPECT_EQ(item.ignoreSkippedUpgradesBelowVersion, "105");
    EXPECT_EQ(item.critical->belowVersion, "95");
    EXPECT_EQ(item.informational->versions, std::vector<std::string>{"80"});
    EXPECT_EQ(item.informational->belowVersions, std::vector<std::string>{"70"});
    EXPECT_EQ(item.channel, "beta");
    EXPECT_EQ(item.phasedRolloutInterval, std::chrono::hours(24));
    EXPECT_EQ(item.enclosure->url.absoluteString(), "https://example.com/kelo.tar.zst");
    EXPECT_EQ(item.enclosure->length, 1234u);
    EXPECT_EQ(item.enclosure->type, "application/zstd");
    EXPECT_EQ(item.enclosure->signature, "abc=");
    EXPECT_EQ(item.enclosure->system, "linux");
}

TEST(Appcast, NamespaceCountsNotItsPrefix) {
    const auto appcast = parseAppcast(bytesOf(
        R"(<rss xmlns:a="http://www.andymatuschak.org/xml-namespaces/sparkle" xmlns:sparkle="urn:x">
        <channel><item><sparkle:version>9</sparkle:version><a:version>2</a:version>
        <enclosure url="https://example.com/k"/></item></channel></rss>)"));
    EXPECT_EQ(only(appcast).version, "2");
}

TEST(Appcast, VersionAtTheArchiveGoesFirst) {
    EXPECT_EQ(only(R"(<item><sparkle:version>1</sparkle:version>
        <sparkle:shortVersionString>one</sparkle:shortVersionString>
        <enclosure url="https://example.com/k_3.zip" sparkle:version="2"
          sparkle:shortVersionString="two"/></item>)")
                  .version,
              "2");
    EXPECT_EQ(only(R"(<item><sparkle:version>1</sparkle:version>
        <enclosure url="https://example.com/k_3.zip"/></item>)")
                  .version,
              "1");
}

TEST(Appcast, VersionMayStandInTheFileName) {
    for (const char* name : {"k_1.2.zip", "big_k_1.2.tar.zst", "k_1.2.tar"})
        EXPECT_EQ(
            only("<item><enclosure url=\"https://example.com/" + std::string(name) + "\"/></item>")
                .version,
            "1.2");
    expectLeftOut("<item><enclosure url=\"https://example.com/kelo.zip\"/></item>", "no version");
}

TEST(Appcast, ItemWithoutVersionIsLeftOut) {
    expectLeftOut("<item><link>https://example.com/</link></item>", "no version");
    expectLeftOut("<item><sparkle:version>  </sparkle:version>"
                  "<link>https://example.com/</link></item>",
                  "no version");
}

TEST(Appcast, VersionOfSeveralLinesIsNone) {
    expectLeftOut("<item><sparkle:version>1\n2</sparkle:version><link>https://e.com/</link></item>",
                  "version is not valid");
    expectLeftOut("<item><sparkle:version>" + std::string(257, '1') +
                      "</sparkle:version><link>https://e.com/</link></item>",
                  "version is not valid");
}

TEST(Appcast, ArchiveMustBeFetchedOverHttps) {
    expectLeftOut(withEnclosure("url=\"http://example.com/k.zip\""), "not https");
    expectLeftOut(withEnclosure("url=\"file:///etc/passwd\""), "not https");
    expectLeftOut(withEnclosure("url=\"k.zip\""), "not https");
    expectLeftOut(withEnclosure("length=\"5\""), "not https");
}

TEST(Appcast, LinksThatAreNotHttpsAreNotTaken) {
    const AppcastItem item = only(
        release("2", "<link>http://example.com/</link>"
                     "<sparkle:releaseNotesLink>http://example.com/n</sparkle:releaseNotesLink>"));
    EXPECT_FALSE(item.link);
    EXPECT_FALSE(item.releaseNotesLink);
}

TEST(Appcast, DifferenceToOneVersionIsLeftOut) {
    expectLeftOut(withEnclosure("url=\"https://example.com/k\" sparkle:deltaFrom=\"1\""), "delta");
}

TEST(Appcast, DifferencesInsideAnItemAreNoItems) {
    const AppcastItem item = only(
        release("2", "<sparkle:deltas><enclosure url=\"https://e.com/d\" sparkle:deltaFrom=\"1\"/>"
                     "</sparkle:deltas>"));
    EXPECT_EQ(item.enclosure->url.absoluteString(), "https://updates.example.com/kelo.tar.zst");
}

TEST(Appcast, ItemNeedsAnArchiveOrALink) {
    expectLeftOut("<item><sparkle:version>2</sparkle:version></item>", "neither");
    EXPECT_FALSE(only("<item><sparkle:version>2</sparkle:version>"
                      "<link>https://example.com/</link></item>")
                     .enclosure);
}

TEST(Appcast, ChannelOfOtherCharactersIsLeftOut) {
    expectLeftOut(release("2", "<sparkle:channel>be ta</sparkle:channel>"), "channel");
    EXPECT_EQ(only(release("2", "<sparkle:channel>be.T-a_1</sparkle:channel>")).channel,
              "be.T-a_1");
}

TEST(Appcast, LengthThatIsNoNumberIsNone) {
    for (const char* length : {"", "-1", "1e3", "12 bytes", "99999999999999999999999", "0x10"})
        EXPECT_FALSE(
            only(release("2", "", "length=\"" + std::string(length) + "\"")).enclosure->length)
            << length;
    EXPECT_FALSE(only(release("2")).enclosure->length);
}

TEST(Appcast, CriticalUpdateOfOldIsRead) {
    EXPECT_TRUE(
        only(release("2", "<sparkle:tags><sparkle:criticalUpdate/></sparkle:tags>")).critical);
    EXPECT_FALSE(only(release("2", "<sparkle:tags/>")).critical);
    EXPECT_FALSE(only(release("2", "<sparkle:criticalUpdate/>")).critical->belowVersion);
}

TEST(Appcast, NotesForEverybodyGoBeforeOthers) {
    const AppcastItem item = only(release(
        "2",
        "<sparkle:releaseNotesLink xml:lang=\"de\">https://e.com/de</sparkle:releaseNotesLink>"
        "<sparkle:releaseNotesLink xml:lang=\"en\">https://e.com/en</sparkle:releaseNotesLink>"));
    EXPECT_EQ(item.releaseNotesLink->absoluteString(), "https://e.com/en");
    EXPECT_EQ(only(release("2", "<sparkle:releaseNotesLink xml:lang=\"de\">https://e.com/de"
                                "</sparkle:releaseNotesLink>"))
                  .releaseNotesLink->absoluteString(),
              "https://e.com/de");
}

TEST(Appcast, OneBadItemLeavesTheOthers) {
    const Appcast appcast = appcastOf(release("1") + "<item/>" + release("2"));
    EXPECT_EQ(appcast.items.size(), 2u);
    EXPECT_EQ(appcast.problems.size(), 1u);
}

TEST(Appcast, FeedWithoutItemsIsAFeed) {
    EXPECT_TRUE(appcastOf("").items.empty());
}

TEST(Appcast, WhatIsNoFeedIsRefused) {
    for (const char* text : {"", " ", "nonsense", "<rss/>", "<rss><channel></rss>", "<html></html>",
                             "<rss><channel>&unknown;</channel></rss>", "<feed><channel/></feed>",
                             "<rss xmlns=\"urn:x\"><channel/></rss>"})
        expectRefused(text);
    expectRefused(feedOf(release("1")).substr(0, 300));
    expectRefused(std::string("\0\0\0\0", 4));
    expectRefused(feedOf("<item>\xff\xfe</item>"));
}

TEST(Appcast, DocumentTypeDeclarationIsRefused) {
    expectRefused("<!DOCTYPE rss>" + feedOf("").substr(39));
    expectRefused("<!DOCTYPE rss SYSTEM \"file:///etc/passwd\"><rss><channel/></rss>");
    expectRefused("<!DOCTYPE rss [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>"
                  "<rss><channel><item><title>&x;</title></item></channel></rss>");
    expectRefused("<?xml version=\"1.0\"?><!-- first --><!DOCTYPE rss PUBLIC \"a\" \"b\">"
                  "<rss><channel/></rss>");
}

TEST(Appcast, BillionLaughsAreRefusedAtOnce) {
    std::string feed = "<?xml version=\"1.0\"?><!DOCTYPE rss [<!ENTITY l0 \"ha\">";
    for (int i = 1; i < 30; ++i) {
        const std::string before = "&l" + std::to_string(i - 1) + ";";
        feed += "<!ENTITY l" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j)
            feed += before;
        feed += "\">";
    }
    expectRefused(feed + "]><rss><channel><item><title x=\"&l29;\">&l29;</title></item>"
                         "</channel></rss>");
}

TEST(Appcast, EndlessNestingIsRefused) {
    std::string feed = "<rss><channel>";
    for (int i = 0; i < 100000; ++i)
        feed += "<a>";
    expectRefused(feed);
    for (int i = 0; i < 100000; ++i)
        feed += "</a>";
    expectRefused(feed + "</channel></rss>");
}

TEST(Appcast, FeedAboveFourMebibytesIsRefused) {
    const std::string frame = feedOf("");
    const std::string filling(updater::appcastLimit - frame.size(), ' ');
    EXPECT_NO_THROW(parseAppcast(bytesOf(feedOf(filling))));
    expectRefused(feedOf(filling + " "));
}

TEST(PublicationDate, IsReadAsFeedsWriteIt) {
    using namespace std::chrono;
    const auto moment = sys_days(year(2026) / 11 / 21) + hours(8) + minutes(30) + seconds(5);
    for (const char* text :
         {"Sat, 21 Nov 2026 08:30:05 +0000", "21 Nov 2026 08:30:05 GMT",
          "Sat, 21 Nov 2026 09:30:05 +0100", " Sat,  21 Nov 2026 00:00:05 -0830 ",
          "Sat, 21 Nov 2026 08:30:05 Z", "Sat, 21 Nov 2026 8:30:05 UTC"})
        EXPECT_EQ(parsePublicationDate(text), moment) << text;
    EXPECT_EQ(parsePublicationDate("Sat, 21 Nov 2026 08:30 +0000"), moment - seconds(5));
}

TEST(PublicationDate, OfOtherKindIsNone) {
    for (const char* text :
         {"", "2026-11-21", "Sat, 21 Nov 2026", "Sat, 31 Feb 2026 08:30:00 +0000",
          "Sat, 21 nov 2026 08:30:00 +0000", "Sat, 21 Nov 2026 24:00:00 +0000",
          "Sat, 21 Nov 2026 08:30:00 CET", "Sat, -1 Nov 2026 08:30:00 +0000",
          "Sat, 21 Nov 99999 08:30:00 +0000", "Sat, 21 Nov 2026 08:60:00 +0000",
          "Sat, 21 Nov 2026 08:30:00 +1", "Sat, 21 Nov 2026 :30:00 +0000"})
        EXPECT_FALSE(parsePublicationDate(text)) << text;
}

} // namespace kelo::test
