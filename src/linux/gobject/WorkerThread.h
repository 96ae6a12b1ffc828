#pragma once

#include "base/async/Worker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace kelo::gobject {

/// A thread that runs jobs in their order. The first job starts it. The destructor drops the jobs
/// that have not begun, and waits for the running one. A job that may block for long needs some
/// way to be ended before that.
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
