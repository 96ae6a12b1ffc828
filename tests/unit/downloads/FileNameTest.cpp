#include "linux/downloads/FileName.h"

#include "base/Utf8.h"

#include <gtest/gtest.h>

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

TEST(FileName, IsTheSuggestedOne) {
    for (const char* name : {"report.pdf", "Über uns.txt", "名前.png", "a b.c", "no-extension"})
        EXPECT_EQ(named(name), name);
}

TEST(FileName, HasNoFolders) {
    EXPECT_EQ(named("../../etc/passwd"), "_.._etc_passwd");
    EXPECT_EQ(named("C:\\Windows\\system.ini"), "C__Windows_system.ini");
}

TEST(FileName, HasNothingThatOtherFileSystemsRefuse) {
    EXPECT_EQ(named("a*b?c\"d<e>f|g.txt"), "a_b_c_d_e_f_g.txt");
    EXPECT_EQ(named("name.txt. . "), "name.txt");
    for (const char* device : {"CON", "nul.txt", "Com1.tar.gz", "lpt9"})
        EXPECT_EQ(named(device), std::string("_") + device);
    EXPECT_EQ(named("console.txt"), "console.txt");
    EXPECT_EQ(named("com10"), "com10");
}

TEST(FileName, IsNotHidden) {
    EXPECT_EQ(named(".bashrc"), "bashrc");
    EXPECT_EQ(named(" .. .profile"), "profile");
}

TEST(FileName, IsNeverEmpty) {
    for (const char* name : {"", ".", "..", " ", "\u202e"})
        EXPECT_EQ(named(name), "download");
}

TEST(FileName, HasNoControlsAndHidesNothing) {
    EXPECT_EQ(named("a\nb\x7f.txt"), "a_b_.txt");
    EXPECT_EQ(named("fdp.\u202etxt.exe"), "fdp.txt.exe");
    EXPECT_EQ(named("a\u200b\u2066b\ufeff.txt"), "ab.txt");
    EXPECT_EQ(named("a\u2028b.txt"), "a_b.txt");
}

TEST(FileName, KeepsTheJoinersThatScriptsNeed) {
    EXPECT_EQ(named("می\u200cروم.txt"), "می\u200cروم.txt");
    EXPECT_EQ(named("👩\u200d💻.png"), "👩\u200d💻.png");
}

TEST(FileName, IsUtf8WhateverWasSuggested) {
    const std::string name = named("a\xff\xc3.txt");
    EXPECT_TRUE(isWellFormedUtf8(name)) << name;
    EXPECT_TRUE(name.ends_with(".txt")) << name;
}

TEST(FileName, TakesItsNumberBeforeTheExtension) {
    EXPECT_EQ(named("report.pdf", 2), "report (2).pdf");
    EXPECT_EQ(named("name", 10), "name (10)");
    EXPECT_EQ(named("report 1. Draft of May", 2), "report 1. Draft of May (2)");
}

TEST(FileName, KeepsTheExtensionsOfCompressedFilesTogether) {
    EXPECT_EQ(named("name.tar.gz", 2), "name (2).tar.gz");
    EXPECT_EQ(named("name.TAR.XZ", 2), "name (2).TAR.XZ");
    EXPECT_EQ(named("table.csv.zst", 3), "table (3).csv.zst");
    EXPECT_EQ(named("name.gz", 2), "name (2).gz");
    EXPECT_EQ(named("my.notes.txt", 2), "my.notes (2).txt");
    EXPECT_EQ(named("Version 1.final version.gz", 2), "Version 1.final version (2).gz");
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
