#include "linux/downloads/FileName.h"

#include "base/Utf8.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace kelo::test {
namespace {

constexpr std::size_t usualLength = 255;

std::string named(const std::string& suggestion, unsigned number = 1,
                  std::size_t most = usualLength) {
    return downloads::numbered(downloads::safeFileName(suggestion), number, most);
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

struct Case {
    const char* suggestion;
    const char* name;
    unsigned number = 1;
};

void expectNames(std::initializer_list<Case> cases) {
    for (const Case& each : cases)
        EXPECT_EQ(named(each.suggestion, each.number), each.name);
}

TEST(FileName, IsTheSuggestedOne) {
    for (const char* name : {"report.pdf", "Über uns.txt", "名前.png", "a b.c", "no-extension"})
        EXPECT_EQ(named(name), name);
}

TEST(FileName, HasNoFolders) {
    expectNames({{"../../etc/passwd", "_.._etc_passwd"},
                 {"C:\\Windows\\system.ini", "C__Windows_system.ini"}});
}

TEST(FileName, HasNothingThatOtherFileSystemsRefuse) {
    expectNames({{"a*b?c\"d<e>f|g.txt", "a_b_c_d_e_f_g.txt"}, {"name.txt. . ", "name.txt"}});
    for (const char* device : {"CON", "nul.txt", "Com1.tar.gz", "lpt9", "con .txt", "COM¹.txt",
                               "lpt³", "CONIN$", "conout$.txt"})
        EXPECT_EQ(named(device), std::string("_") + device);
    expectNames({{"console.txt", "console.txt"}, {"com10", "com10"}});
}

TEST(FileName, IsNotHidden) {
    expectNames({{".bashrc", "bashrc"}, {" .. .profile", "profile"}});
}

TEST(FileName, IsNeverEmpty) {
    for (const char* name :
         {"", ".", "..", " ", "\u202e", "\u200d\u200c", "\u3164", "\u00a0.\u3000"})
        EXPECT_EQ(named(name), "download");
}

TEST(FileName, HasNoControlsAndHidesNothing) {
    expectNames({{"a\nb\x7f.txt", "a b.txt"},
                 {"fdp.\u202etxt.exe", "fdp.txt.exe"},
                 {"a\u200b\u2066b\ufeff.txt", "ab.txt"},
                 {"a\u2028b.txt", "a b.txt"},
                 {"report.pdf\u00a0\u00a0\u00a0\u00a0.exe", "report.pdf .exe"},
                 {"\u200d.profile", "profile"}});
}

TEST(FileName, KeepsTheJoinersThatScriptsNeed) {
    expectNames({{"می\u200cروم.txt", "می\u200cروم.txt"}, {"👩\u200d💻.png", "👩\u200d💻.png"}});
}

TEST(FileName, IsUtf8WhateverWasSuggested) {
    const std::string name = named("a\xff\xc3.txt");
    EXPECT_TRUE(isWellFormedUtf8(name)) << name;
    EXPECT_TRUE(name.ends_with(".txt")) << name;
}

TEST(FileName, TakesItsNumberBeforeTheExtension) {
    expectNames({{"report.pdf", "report (2).pdf", 2},
                 {"name", "name (10)", 10},
                 {"report 1. Draft of May", "report 1. Draft of May (2)", 2}});
}

TEST(FileName, KeepsTheExtensionsOfCompressedFilesTogether) {
    expectNames({{"name.tar.gz", "name (2).tar.gz", 2},
                 {"name.TAR.XZ", "name (2).TAR.XZ", 2},
                 {"table.csv.zst", "table (3).csv.zst", 3},
                 {"name.gz", "name (2).gz", 2},
                 {"my.notes.txt", "my.notes (2).txt", 2},
                 {"Version 1.final version.gz", "Version 1.final version (2).gz", 2}});
}

TEST(FileName, IsCutToWhatTheFileSystemTakes) {
    EXPECT_EQ(named(std::string(300, 'a') + ".pdf"), std::string(251, 'a') + ".pdf");
    EXPECT_EQ(named(std::string(300, 'a') + ".tar.gz", 12),
              std::string(255 - 12, 'a') + " (12).tar.gz");
    EXPECT_EQ(named(std::string(300, 'a'), 1, 143), std::string(143, 'a'));
    EXPECT_EQ(named("a." + std::string(300, 'b')).size(), 255u);
}

TEST(FileName, IsCutBetweenCharacters) {
    // Four bytes each, so that 251 bytes end inside one.
    EXPECT_EQ(named(repeated("😀", 100) + ".pdf"), repeated("😀", 62) + ".pdf");
    // A letter with its accent, three bytes.
    EXPECT_EQ(named(std::string(249, 'a') + "e\u0301x.pdf"), std::string(249, 'a') + ".pdf");
    EXPECT_EQ(named(std::string(248, 'a') + "e\u0301x.pdf"), std::string(248, 'a') + "e\u0301.pdf");
    EXPECT_EQ(named(std::string(245, 'a') + "👍🏽.pdf"), std::string(245, 'a') + ".pdf");
    EXPECT_EQ(named(std::string(245, 'a') + "👩\u200d💻.pdf"), std::string(245, 'a') + ".pdf");
}

TEST(FileName, OfNothingButMarksIsStillOne) {
    const std::string name = named("a" + repeated("\u0301", 300) + ".pdf");
    EXPECT_TRUE(isWellFormedUtf8(name));
    EXPECT_TRUE(name.ends_with("\u0301.pdf"));
    EXPECT_LE(name.size(), usualLength);
}

TEST(FileName, DoesNotEndItsStemWithABlankAfterTheCut) {
    EXPECT_EQ(named(std::string(250, 'a') + " bcdef.pdf"), std::string(250, 'a') + ".pdf");
}

} // namespace
} // namespace kelo::test
