#include "log/DebugLog.h"
#include "fakes/ScopedTestDesktop.h"

#include <gtest/gtest.h>

namespace kelo {
namespace {

using namespace std::chrono;

struct DebugLogTest : testing::Test {
    fakes::ScopedTestDesktop desktop;
    std::map<std::string, std::string>& files = desktop.fileSystem().files;
    const std::string path{log::debugLogPath};

    DebugLogTest() {
        desktop.clock().time =
            sys_days(year(2026) / 3 / 1) + hours(9) + minutes(5) + seconds(7) + milliseconds(900);
    }
};

TEST_F(DebugLogTest, FirstCallCreatesTheFileWithOneRecord) {
    log::debugLog("hello");
    EXPECT_EQ(files.at("/tmp/kelo-debug.log"), "[2026-03-01 09:05:07 +0000] hello\n");
    EXPECT_EQ(desktop.fileSystem().calls,
              (std::vector<std::string>{"open " + path, "write whole " + path}));
}

TEST_F(DebugLogTest, LaterCallsAppendAndLeaveTheRestIntact) {
    files[path] = "earlier\n";
    log::debugLog("hello");
    EXPECT_EQ(files.at(path), "earlier\n[2026-03-01 09:05:07 +0000] hello\n");
    EXPECT_EQ(desktop.fileSystem().calls,
              (std::vector<std::string>{"open " + path, "seek to end", "write", "close"}));
}

TEST_F(DebugLogTest, EmptyMessageIsBracketedTimestampBlankAndLineFeed) {
    log::debugLog("");
    EXPECT_EQ(files.at(path), "[2026-03-01 09:05:07 +0000] \n");
}

TEST_F(DebugLogTest, NonAsciiMessageIsWrittenAsUtf8) {
    log::debugLog("a — b");
    EXPECT_EQ(files.at(path), "[2026-03-01 09:05:07 +0000] a \xE2\x80\x94 b\n");
}

TEST_F(DebugLogTest, MessageIsWrittenVerbatim) {
    log::debugLog("  one\ntwo\t");
    EXPECT_EQ(files.at(path), "[2026-03-01 09:05:07 +0000]   one\ntwo\t\n");
}

TEST_F(DebugLogTest, MessageThatIsNotUtf8LeavesTheFileUntouched) {
    log::debugLog("bad \xFF");
    EXPECT_TRUE(desktop.fileSystem().calls.empty());
}

TEST_F(DebugLogTest, FileThatCannotBeWrittenIsNotReported) {
    files[path] = "earlier\n";
    desktop.fileSystem().writable = false;
    EXPECT_NO_THROW(log::debugLog("hello"));
    EXPECT_EQ(files.at(path), "earlier\n");
    EXPECT_EQ(desktop.fileSystem().calls,
              (std::vector<std::string>{"open " + path, "write whole " + path}));
}

TEST_F(DebugLogTest, TimestampIsUtcAndZeroPadded) {
    desktop.clock().time = sys_days(year(1999) / 12 / 31) + hours(23) + minutes(59) + seconds(59);
    log::debugLog("x");
    EXPECT_EQ(files.at(path), "[1999-12-31 23:59:59 +0000] x\n");
}

} // namespace
} // namespace kelo
