#include "linux/gobject/WorkerThread.h"

#include <utility>

namespace kelo::gobject {

WorkerThread::~WorkerThread() {
    if (!thread.joinable())
        return;
    thread.request_stop();
    std::deque<std::function<void()>> dropped;
    {
        const std::lock_guard lock(mutex);
        jobs.swap(dropped);
    }
    // Outside the lock, because destroying a job may run code that takes it.
    dropped.clear();
    thread.join();
}

void WorkerThread::perform(std::function<void()> job) {
    const std::lock_guard lock(mutex);
    jobs.push_back(std::move(job));
    if (!thread.joinable())
        thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
    arrived.notify_one();
}

void WorkerThread::run(const std::stop_token& stop) {
    while (true) {
        std::function<void()> job;
        {
            std::unique_lock lock(mutex);
            if (!arrived.wait(lock, stop, [this] { return !jobs.empty(); }) ||
                stop.stop_requested())
                return;
            job = std::move(jobs.front());
            jobs.pop_front();
        }
        job();
    }
}

} // namespace kelo::gobject
