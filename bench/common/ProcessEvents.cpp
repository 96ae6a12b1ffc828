#include "common/ProcessEvents.h"

#include <linux/perf_event.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace kelo::bench {

namespace {

using Record = std::span<const std::byte>;

template <typename Number>
Number numberAt(Record record, std::size_t offset) {
    Number number{};
    if (offset + sizeof number <= record.size())
        std::memcpy(&number, record.data() + offset, sizeof number);
    return number;
}

std::chrono::steady_clock::time_point timeOf(Record record) {
    const auto nanoseconds = numberAt<std::uint64_t>(record, record.size() - sizeof(std::uint64_t));
    return std::chrono::steady_clock::time_point(
        std::chrono::nanoseconds(static_cast<std::int64_t>(nanoseconds)));
}

/// Process, its parent, thread and the thread's parent follow the header.
void readFork(Record record, std::vector<ProcessEvent>& events) {
    constexpr std::size_t processAt = sizeof(perf_event_header);
    const auto process = numberAt<std::uint32_t>(record, processAt);
    const auto parent = numberAt<std::uint32_t>(record, processAt + 4);
    if (process != parent)
        events.push_back({ProcessEvent::Kind::forked, static_cast<pid_t>(process),
                          static_cast<pid_t>(parent), "", timeOf(record)});
}

/// Process, thread and the name, filled up with zeros, follow the header.
void readName(Record record, std::vector<ProcessEvent>& events) {
    constexpr std::size_t processAt = sizeof(perf_event_header);
    constexpr std::size_t nameAt = processAt + 8;
    if (record.size() < nameAt + sizeof(std::uint64_t))
        return;
    const auto* const name = reinterpret_cast<const char*>(record.data() + nameAt);
    const std::size_t room = record.size() - nameAt - sizeof(std::uint64_t);
    events.push_back({ProcessEvent::Kind::executed,
                      static_cast<pid_t>(numberAt<std::uint32_t>(record, processAt)), 0,
                      std::string(name, ::strnlen(name, room)), timeOf(record)});
}

} // namespace

std::vector<ProcessEvent> readRecords(std::span<const std::byte> records) {
    std::vector<ProcessEvent> events;
    while (records.size() >= sizeof(perf_event_header)) {
        const auto header = numberAt<perf_event_header>(records, 0);
        if (header.size < sizeof header + sizeof(std::uint64_t) || header.size > records.size())
            break;
        const Record record = records.first(header.size);
        if (header.type == PERF_RECORD_FORK)
            readFork(record, events);
        if (header.type == PERF_RECORD_COMM && (header.misc & PERF_RECORD_MISC_COMM_EXEC) != 0)
            readName(record, events);
        records = records.subspan(header.size);
    }
    return events;
}

} // namespace kelo::bench
