#include "posix/MemoryShield.h"

#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/resource.h>

#include <optional>

namespace kelo {
namespace {

using posix::MemoryShield;

rlimit coreLimit() {
    rlimit limit{};
    ::getrlimit(RLIMIT_CORE, &limit);
    return limit;
}

bool isShielded() {
    return ::prctl(PR_GET_DUMPABLE) == 0 && coreLimit().rlim_cur == 0;
}

/// With a limit that can be told from none.
class MemoryShieldTest : public testing::Test {
protected:
    void SetUp() override {
        if (before.rlim_max == 0)
            GTEST_SKIP() << "no core files are allowed here";
        const rlimit some{1, before.rlim_max};
        ::setrlimit(RLIMIT_CORE, &some);
        ::prctl(PR_SET_DUMPABLE, 1);
    }
    void TearDown() override { ::setrlimit(RLIMIT_CORE, &before); }

    const rlimit before = coreLimit();
};

TEST_F(MemoryShieldTest, KeepsOthersOutAndRestoresWhatWas) {
    {
        const MemoryShield shield;
        EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 0);
        EXPECT_EQ(coreLimit().rlim_cur, 0U);
        EXPECT_EQ(coreLimit().rlim_max, before.rlim_max);
    }
    EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 1);
    EXPECT_EQ(coreLimit().rlim_cur, 1U);
    EXPECT_EQ(coreLimit().rlim_max, before.rlim_max);
}

TEST_F(MemoryShieldTest, LastsAsLongAsTheLastOne) {
    std::optional<MemoryShield> first;
    std::optional<MemoryShield> second;
    first.emplace();
    second.emplace();
    first.reset();
    EXPECT_TRUE(isShielded());
    first.emplace();
    second.reset();
    EXPECT_TRUE(isShielded());
    first.reset();
    EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 1);
    EXPECT_EQ(coreLimit().rlim_cur, 1U);
}

TEST_F(MemoryShieldTest, LeavesAProcessShieldedThatWasBefore) {
    ::prctl(PR_SET_DUMPABLE, 0);
    { const MemoryShield shield; }
    EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 0);
    ::prctl(PR_SET_DUMPABLE, 1);
}

} // namespace
} // namespace kelo
