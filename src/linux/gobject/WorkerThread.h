#pragma once

#include "base/async/Worker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace kelo::gobject {

/// One thread of its own, started by the first job. When it goes, it waits for the job that is
/// running and drops those that have not begun; who gives it a job that can block for long must
/// have a way to end that job first.
class WorkerThread final : public Worker {
public:
    WorkerThread() = default;
    ~WorkerThread() override;
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    /// Any thread.
    void perform(std::function<void()> job) override;

private:
    void run(const std::stop_token& stop);

    std::mutex mutex;
    std::condition_variable_any arrived;
    std::deque<std::function<void()>> jobs;
    std::jthread thread;
};

} // namespace kelo::gobject
