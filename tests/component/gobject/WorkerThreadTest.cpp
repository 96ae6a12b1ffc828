#include "component/ScopedMainLoop.h"

#include "linux/gobject/WorkerThread.h"

#include <gtest/gtest.h>

#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace kelo {

namespace {

Task<void> collect(Worker& worker, std::vector<int>& order, int number) {
    auto job = [number] { return number; };
    order.push_back(co_await onWorker(worker, std::move(job)));
}

Task<void> runElsewhere(Worker& worker, std::optional<std::thread::id>& where) {
    auto job = [] { return std::this_thread::get_id(); };
    where = co_await onWorker(worker, std::move(job));
}

Task<void> catchFailure(Worker& worker, std::string& caught) {
    try {
        auto job = []() -> int { throw std::runtime_error("from the worker"); };
        co_await onWorker(worker, std::move(job));
    } catch (const std::runtime_error& error) {
        caught = error.what();
    }
}

} // namespace

TEST(WorkerThread, RunsJobsOffTheMainThreadAndComesBackToIt) {
    const ScopedMainLoop loop;
    gobject::WorkerThread worker;
    std::optional<std::thread::id> where;
    spawn(runElsewhere(worker, where));
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return where.has_value(); }));
    EXPECT_NE(*where, std::this_thread::get_id());
}

TEST(WorkerThread, RunsJobsInTheirOrder) {
    const ScopedMainLoop loop;
    gobject::WorkerThread worker;
    std::vector<int> order, expected;
    for (int i = 0; i < 50; ++i) {
        spawn(collect(worker, order, i));
        expected.push_back(i);
    }
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return order.size() == 50; }));
    EXPECT_EQ(order, expected);
}

TEST(WorkerThread, BringsExceptionsBack) {
    const ScopedMainLoop loop;
    gobject::WorkerThread worker;
    std::string caught;
    spawn(catchFailure(worker, caught));
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return !caught.empty(); }));
    EXPECT_EQ(caught, "from the worker");
}

TEST(WorkerThread, AtItsEndDropsWaitingJobsAndWaitsForTheRunningOne) {
    bool finished = false, ran = false;
    std::latch running(1), dropped(1);
    {
        gobject::WorkerThread worker;
        worker.perform([&] {
            running.count_down();
            dropped.wait();
            finished = true;
        });
        running.wait();
        const std::shared_ptr<std::latch> tellsWhenDropped(
            &dropped, [](std::latch* latch) { latch->count_down(); });
        worker.perform([&ran, tellsWhenDropped] { ran = true; });
    }
    EXPECT_TRUE(finished);
    EXPECT_FALSE(ran);
}

TEST(WorkerThread, NeverUsedItEndsAtOnce) {
    const gobject::WorkerThread worker;
    SUCCEED();
}

} // namespace kelo
