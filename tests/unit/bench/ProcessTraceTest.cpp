#include "common/ProcessTrace.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace kelo::bench {
namespace {

using Kind = ProcessEvent::Kind;

/// Null where the kernel reports to root alone.
std::unique_ptr<ProcessTrace> traceIfAllowed(std::size_t pages) {
    try {
        return std::make_unique<ProcessTrace>(pages);
    } catch (const std::runtime_error&) {
        return nullptr;
    }
}

/// Keeps this process on one of the processors that it may use: the first or the last.
void stayOn(const cpu_set_t& allowed, bool first) {
    cpu_set_t one;
    CPU_ZERO(&one);
    for (std::size_t processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (!CPU_ISSET(processor, &allowed))
            continue;
        CPU_ZERO(&one);
        CPU_SET(processor, &one);
        if (first)
            break;
    }
    ::sched_setaffinity(0, sizeof one, &one);
}

/// A process that starts another one, which runs a program. What comes later happens on a processor
/// whose records are read earlier, if there are two.
pid_t startGrandchild() {
    cpu_set_t allowed;
    ::sched_getaffinity(0, sizeof allowed, &allowed);
    stayOn(allowed, false);
    const pid_t child = ::fork();
    if (child == 0) {
        stayOn(allowed, true);
        const pid_t grandchild = ::fork();
        if (grandchild == 0) {
            ::execl("/bin/true", "true", nullptr);
            ::_exit(1);
        }
        int status = 0;
        ::waitpid(grandchild, &status, 0);
        ::_exit(status == 0 ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ::sched_setaffinity(0, sizeof allowed, &allowed);
    EXPECT_EQ(status, 0);
    return child;
}

TEST(ProcessTrace, ReportsWhatChildrenStartAndExecuteInTheOrderOfTime) {
    const auto trace = traceIfAllowed(16);
    if (!trace)
        GTEST_SKIP() << "The kernel reports to root alone.";
    const auto before = std::chrono::steady_clock::now();
    const pid_t child = startGrandchild();
    const auto after = std::chrono::steady_clock::now();
    const auto events = trace->take();
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].kind, Kind::forked);
    EXPECT_EQ(events[0].process, child);
    EXPECT_EQ(events[0].parent, ::getpid());
    EXPECT_EQ(events[1].kind, Kind::forked);
    EXPECT_EQ(events[1].parent, child);
    EXPECT_EQ(events[2].kind, Kind::executed);
    EXPECT_EQ(events[2].process, events[1].process);
    EXPECT_EQ(events[2].program, "true");
    EXPECT_TRUE(std::ranges::is_sorted(events, {}, &ProcessEvent::time));
    EXPECT_GE(events.front().time, before);
    EXPECT_LE(events.back().time, after);
}

TEST(ProcessTrace, TakesNothingTwiceHoweverMuchThereIs) {
    const auto trace = traceIfAllowed(1);
    if (!trace)
        GTEST_SKIP() << "The kernel reports to root alone.";
    // Several times what the rings hold at once.
    constexpr int enough = 150;
    for (int time = 0; time < enough; ++time) {
        startGrandchild();
        EXPECT_EQ(trace->take().size(), 3U);
    }
    EXPECT_TRUE(trace->take().empty());
}

} // namespace
} // namespace kelo::bench
