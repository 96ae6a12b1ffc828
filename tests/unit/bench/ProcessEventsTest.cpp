#include "common/ProcessEvents.h"

#include <gtest/gtest.h>
#include <linux/perf_event.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace kelo::bench {
namespace {

/// Records as the kernel lays them out.
class Records {
public:
    Records& fork(std::uint32_t process, std::uint32_t parent, std::uint64_t time,
                  std::uint32_t type = PERF_RECORD_FORK) {
        begin(type, 0, 4 * 4 + 8 + 8);
        add(process).add(parent).add(process).add(parent).add(time);
        return add(time);
    }
    Records& name(std::uint32_t process, const std::string& program, std::uint64_t time,
                  std::uint16_t misc = PERF_RECORD_MISC_COMM_EXEC) {
        std::string padded = program;
        padded.resize((program.size() / 8 + 1) * 8);
        begin(PERF_RECORD_COMM, misc, 8 + padded.size() + 8);
        add(process).add(process);
        for (const char letter : padded)
            add(letter);
        return add(time);
    }
    std::vector<ProcessEvent> read(std::size_t without = 0) const {
        return readRecords(std::span(bytes).first(bytes.size() - without));
    }

    template <typename Number>
    Records& add(Number number) {
        const auto* const raw = reinterpret_cast<const std::byte*>(&number);
        bytes.insert(bytes.end(), raw, raw + sizeof number);
        return *this;
    }

private:
    void begin(std::uint32_t type, std::uint16_t misc, std::size_t size) {
        add(perf_event_header{type, misc,
                              static_cast<std::uint16_t>(sizeof(perf_event_header) + size)});
    }
    std::vector<std::byte> bytes;
};

std::int64_t nanoseconds(const ProcessEvent& event) {
    return event.time.time_since_epoch().count();
}

TEST(ProcessEvents, ForksAndExecutionsAreReadInOrder) {
    const auto events =
        Records().fork(20, 10, 100).name(20, "WebKitNetworkPr", 200).fork(21, 20, 300).read();
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].kind, ProcessEvent::Kind::forked);
    EXPECT_EQ(events[0].process, 20);
    EXPECT_EQ(events[0].parent, 10);
    EXPECT_EQ(nanoseconds(events[0]), 100);
    EXPECT_EQ(events[1].kind, ProcessEvent::Kind::executed);
    EXPECT_EQ(events[1].process, 20);
    EXPECT_EQ(events[1].program, "WebKitNetworkPr");
    EXPECT_EQ(nanoseconds(events[1]), 200);
    EXPECT_EQ(events[2].process, 21);
}

TEST(ProcessEvents, ThreadsAndTheirNamesAreNoProcesses) {
    EXPECT_TRUE(Records().fork(20, 20, 1).name(20, "pool-1", 2, /*misc=*/0).read().empty());
}

TEST(ProcessEvents, OtherRecordsArePassedOver) {
    const auto events = Records().fork(20, 10, 1, PERF_RECORD_EXIT).name(21, "a", 2).read();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].program, "a");
}

TEST(ProcessEvents, ARecordThatIsCutOffEndsTheList) {
    const auto records = Records().name(20, "a", 1).name(21, "b", 2);
    EXPECT_EQ(records.read(1).size(), 1U);
    EXPECT_EQ(records.read(30).size(), 1U);
    EXPECT_TRUE(Records().add(perf_event_header{PERF_RECORD_COMM, 0, 0}).read().empty());
    EXPECT_TRUE(readRecords({}).empty());
}

} // namespace
} // namespace kelo::bench
