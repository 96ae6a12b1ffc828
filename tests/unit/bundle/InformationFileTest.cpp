#include "bundle/InformationFile.h"
#include "bundle/ProgramPlace.h"
#include "component/installer/Trees.h"

#include <gmock/gmock.h>
#include <plist/plist.h>

#include <sys/stat.h>

#include <cstdlib>

namespace kelo::tests {

namespace {

using bundle::parseInformation;
using bundle::readInformationFile;

constexpr const char* everyKind =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
    "<key>text</key><string>1.4.2 \xE2\x80\x93 beta</string>"
    "<key>number</key><integer>86400</integer>"
    "<key>yes</key><true/><key>no</key><false/>"
    "<key>part</key><real>0.5</real>"
    "<key>list</key><array><string>x</string></array>"
    "<key>inside</key><dict><key>text</key><string>other</string></dict>"
    "</dict></plist>";

std::string binaryOf(const std::string& xml) {
    plist_t root = nullptr;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &root);
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    std::string binary(bytes, length);
    std::free(bytes);
    plist_free(root);
    return binary;
}

void expectEveryKind(const std::optional<platform::InformationDictionary>& information) {
    ASSERT_TRUE(information);
    EXPECT_EQ(std::get<std::string>(information->at("text")), "1.4.2 \xE2\x80\x93 beta");
    EXPECT_EQ(std::get<std::int64_t>(information->at("number")), 86400);
    EXPECT_TRUE(std::get<bool>(information->at("yes")));
    EXPECT_FALSE(std::get<bool>(information->at("no")));
    EXPECT_EQ(std::get<double>(information->at("part")), 0.5);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(information->at("list")));
    EXPECT_TRUE(std::holds_alternative<std::monostate>(information->at("inside")));
    EXPECT_EQ(information->size(), 7U);
}

} // namespace

TEST(InformationFile, IsReadInItsXmlForm) {
    expectEveryKind(parseInformation(everyKind));
}

TEST(InformationFile, IsReadInItsBinaryForm) {
    const std::string binary = binaryOf(everyKind);
    ASSERT_TRUE(binary.starts_with("bplist"));
    expectEveryKind(parseInformation(binary));
}

TEST(InformationFile, ThatIsNoDictionaryIsNone) {
    EXPECT_FALSE(parseInformation("<plist version=\"1.0\"><array/></plist>"));
    EXPECT_FALSE(parseInformation("<plist version=\"1.0\"><string>x</string></plist>"));
}

TEST(InformationFile, InAnyOtherFormIsNone) {
    EXPECT_FALSE(parseInformation("{\"text\": \"JSON\"}"));
    EXPECT_FALSE(parseInformation("{ text = \"old style\"; }"));
}

TEST(InformationFile, ThatIsDamagedIsNone) {
    EXPECT_FALSE(parseInformation(""));
    EXPECT_FALSE(parseInformation("no plist at all"));
    EXPECT_FALSE(parseInformation("bplist00"));
    EXPECT_FALSE(parseInformation(std::string_view("\0\0\0\0", 4)));
}

TEST(InformationFile, ThatIsCutOffAnywhereNeverEndsTheProgram) {
    for (const std::string& whole : {std::string(everyKind), binaryOf(everyKind)}) {
        for (std::size_t length = 0; length < whole.size(); ++length)
            parseInformation(std::string_view(whole).substr(0, length));
    }
}

/// A dictionary of one key and one text in the binary form. Each is an object as the form writes
/// it.
std::string binaryWith(std::string_view key, std::string_view text) {
    std::string whole = "bplist00\xD1\x01\x02";
    const std::size_t keyPlace = whole.size();
    whole += key;
    const std::size_t textPlace = whole.size();
    whole += text;
    const std::size_t table = whole.size();
    whole += {'\x08', static_cast<char>(keyPlace), static_cast<char>(textPlace)};
    whole += std::string(6, '\0') + "\x01\x01";
    for (const std::size_t number : {std::size_t(3), std::size_t(0), table})
        whole += std::string(7, '\0') + static_cast<char>(number);
    return whole;
}

TEST(InformationFile, TextThatIsNotUtf8IsLeftOut) {
    ASSERT_EQ(
        platform::informationValue<std::string>(*parseInformation(binaryWith("Qa", "Qb")), "a"),
        "b");
    const auto badText = parseInformation(binaryWith("Qa", "R\xFF\xFE"));
    ASSERT_TRUE(badText);
    EXPECT_EQ(badText->at("a"), platform::InformationValue());
    const auto badKey = parseInformation(binaryWith("Q\x80", "Qb"));
    ASSERT_TRUE(badKey);
    EXPECT_TRUE(badKey->empty());
}

TEST(InformationFile, NulInATextOrAKeyIsLeftOutAndDoesNotEndTheProgram) {
    constexpr std::string_view wide("\x63\0a\0\0\0b", 7);
    const auto badText = parseInformation(binaryWith("Qa", wide));
    ASSERT_TRUE(badText);
    EXPECT_EQ(badText->at("a"), platform::InformationValue());
    const auto badKey = parseInformation(binaryWith(wide, "Qb"));
    ASSERT_TRUE(badKey);
    EXPECT_TRUE(badKey->empty());
    constexpr std::string_view xml("<plist><dict><key>a</key><string>b\0c</string></dict></plist>",
                                   60);
    EXPECT_EQ(parseInformation(xml)->at("a"), platform::InformationValue());
}

TEST(InformationFile, IsReadAnewAtEachCall) {
    const TreeFolder folder;
    EXPECT_FALSE(readInformationFile(folder / "Info.plist"));
    writeFile(folder / "Info.plist", information("1.0"));
    EXPECT_EQ(platform::informationValue<std::string>(*readInformationFile(folder / "Info.plist"),
                                                      "CFBundleVersion"),
              "1.0");
    writeFile(folder / "Info.plist", information("1.1"));
    EXPECT_EQ(platform::informationValue<std::string>(*readInformationFile(folder / "Info.plist"),
                                                      "CFBundleVersion"),
              "1.1");
}

TEST(InformationFile, ThatIsNoFileOrLongerThanTheLimitIsNone) {
    const TreeFolder folder;
    EXPECT_FALSE(readInformationFile(folder.path()));
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(readInformationFile(folder / "pipe"));
    const std::string start = "<plist version=\"1.0\"><dict/>";
    const std::string end = "</plist>";
    const std::size_t room = bundle::longestInformationFile - start.size() - end.size();
    writeFile(folder / "longest", start + std::string(room, ' ') + end);
    EXPECT_TRUE(readInformationFile(folder / "longest"));
    writeFile(folder / "longer", start + std::string(room + 1, ' ') + end);
    EXPECT_FALSE(readInformationFile(folder / "longer"));
}

TEST(InformationText, IsNoneForAnotherKindOfValue) {
    const auto information = parseInformation(everyKind);
    EXPECT_FALSE(platform::informationValue<std::string>(*information, "number"));
    EXPECT_FALSE(platform::informationValue<std::string>(*information, "absent"));
}

TEST(InstallationPrefix, IsAboveBinAndInABuildTreeBesideTheProgram) {
    EXPECT_EQ(bundle::installationPrefix("/usr/bin/kelo"), "/usr");
    EXPECT_EQ(bundle::installationPrefix("/home/ada/Kelo/bin/kelo"), "/home/ada/Kelo");
    EXPECT_EQ(bundle::installationPrefix("/home/ada/src/build/kelo"), "/home/ada/src/build");
    EXPECT_EQ(bundle::informationPath("/usr"), "/usr/share/kelo/Info.plist");
}

TEST(ProgramPath, IsThatOfTheRunningProgram) {
    EXPECT_EQ(bundle::programPath().filename(), "unit_bundle");
}

} // namespace kelo::tests
