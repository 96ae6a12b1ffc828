#include "common/ProcessTrace.h"

#include "posix/FileDescriptor.h"

#include <linux/perf_event.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <ctime>
#include <iterator>
#include <span>
#include <stdexcept>
#include <utility>

namespace kelo::bench {

namespace {

perf_event_attr wanted() {
    perf_event_attr attributes{};
    attributes.size = sizeof attributes;
    attributes.type = PERF_TYPE_SOFTWARE;
    attributes.config = PERF_COUNT_SW_DUMMY;
    attributes.sample_type = PERF_SAMPLE_TIME;
    attributes.sample_id_all = 1;
    attributes.inherit = 1;
    attributes.task = 1;
    attributes.comm = 1;
    attributes.comm_exec = 1;
    attributes.exclude_kernel = 1;
    attributes.exclude_hv = 1;
    attributes.use_clockid = 1;
    attributes.clockid = CLOCK_MONOTONIC;
    return attributes;
}

} // namespace

/// The records of one processor. The kernel writes at the head, we read at the tail.
class ProcessTrace::Ring {
public:
    Ring(int processor, std::size_t pages) {
        auto attributes = wanted();
        event = posix::FileDescriptor(static_cast<int>(
            ::syscall(SYS_perf_event_open, &attributes, 0, processor, -1, PERF_FLAG_FD_CLOEXEC)));
        if (!event)
            throw std::runtime_error("The kernel reports no processes (perf_event_open).");
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        size = (pages + 1) * page;
        memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, event.get(), 0);
        if (memory == MAP_FAILED)
            throw std::runtime_error("The kernel's reports of processes have no room.");
    }
    Ring(Ring&& other) noexcept
        : event(std::move(other.event)),
          memory(std::exchange(other.memory, MAP_FAILED)),
          size(other.size) {}
    Ring& operator=(Ring&&) = delete;
    ~Ring() {
        if (memory != MAP_FAILED)
            ::munmap(memory, size);
    }

    std::vector<ProcessEvent> take() {
        auto& page = *static_cast<perf_event_mmap_page*>(memory);
        const auto head = std::atomic_ref(page.data_head).load(std::memory_order_acquire);
        const auto* const data = static_cast<const std::byte*>(memory) + page.data_offset;
        std::vector<std::byte> records;
        for (auto place = page.data_tail; place != head; ++place)
            records.push_back(data[place % page.data_size]);
        std::atomic_ref(page.data_tail).store(head, std::memory_order_release);
        return readRecords(records);
    }

private:
    posix::FileDescriptor event;
    void* memory = MAP_FAILED;
    std::size_t size = 0;
};

ProcessTrace::ProcessTrace(std::size_t pages) {
    const long processors = ::sysconf(_SC_NPROCESSORS_ONLN);
    for (int processor = 0; processor < processors; ++processor)
        rings.emplace_back(processor, pages);
}

ProcessTrace::~ProcessTrace() = default;

std::vector<ProcessEvent> ProcessTrace::take() {
    std::vector<ProcessEvent> events;
    for (auto& ring : rings)
        std::ranges::move(ring.take(), std::back_inserter(events));
    std::ranges::stable_sort(events, {}, &ProcessEvent::time);
    return events;
}

} // namespace kelo::bench
