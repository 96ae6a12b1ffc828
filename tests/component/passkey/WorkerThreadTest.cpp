#include "MainLoopScope.h"

#include "linux/glib/WorkerThread.h"

#include <gtest/gtest.h>

#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace kelo {

namespace {

platform::Task<void> collect(platform::Worker& worker, std::vector<int>& order, int number) {
    auto job = [number] { return number; };
    order.push_back(co_await platform::onWorker(worker, std::move(job)));
}

platform::Task<void> runElsewhere(platform::Worker& worker, std::optional<std::thread::id>& where) {
    auto job = [] { return std::this_thread::get_id(); };
    where = co_await platform::onWorker(worker, std::move(job));
}

platform::Task<void> catchFailure(platform::Worker& worker, std::string& caught) {
    try {
        auto job = []() -> int { throw std::runtime_error("from the worker"); };
        co_await platform::onWorker(worker, std::move(job));
    } catch (const std::runtime_error& error) {
        caught = error.what();
    }
}

} // namespace

TEST(WorkerThread, RunsJobsOffTheMainThreadAndComesBackToIt) {
    const MainLoopScope loop;
    desktop::WorkerThread worker;
    std::optional<std::thread::id> where;
    platform::spawn(runElsewhere(worker, where));
    ASSERT_TRUE(MainLoopScope::runUntil([&] { return where.has_value(); }));
    EXPECT_NE(*where, std::this_thread::get_id());
}

TEST(WorkerThread, RunsJobsInTheirOrder) {
    const MainLoopScope loop;
    desktop::WorkerThread worker;
    std::vector<int> order, expected;
    for (int i = 0; i < 50; ++i) {
        platform::spawn(collect(worker, order, i));
        expected.push_back(i);
    }
    ASSERT_TRUE(MainLoopScope::runUntil([&] { return order.size() == 50; }));
    EXPECT_EQ(order, expected);
}

TEST(WorkerThread, BringsExceptionsBack) {
    const MainLoopScope loop;
    desktop::WorkerThread worker;
    std::string caught;
    platform::spawn(catchFailure(worker, caught));
    ASSERT_TRUE(MainLoopScope::runUntil([&] { return !caught.empty(); }));
    EXPECT_EQ(caught, "from the worker");
}

TEST(WorkerThread, AtItsEndDropsWaitingJobsAndWaitsForTheRunningOne) {
    bool finished = false, ran = false;
    std::latch running(1), dropped(1);
    {
        desktop::WorkerThread worker;
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
    const desktop::WorkerThread worker;
    SUCCEED();
}

} // namespace kelo
