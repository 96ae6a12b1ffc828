#include "base/async/Task.h"
#include "base/async/Spawn.h"
#include "base/async/Worker.h"
#include "fakes/FakeMainLoop.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace kelo::platform {
namespace {

struct TaskTest : testing::Test {
    fakes::FakeMainLoop loop;
    MainLoop::Installation installation{loop};
    std::vector<std::string> steps;

    ~TaskTest() override { dropSpawnedTasks(); }
};

Task<int> answer(std::vector<std::string>& steps) {
    steps.emplace_back("answer");
    co_return 42;
}

Task<void> noteAnswer(std::vector<std::string>& steps) {
    steps.emplace_back("start");
    const int value = co_await answer(steps);
    steps.push_back(std::to_string(value));
}

TEST_F(TaskTest, TaskDoesNothingUntilAwaited) {
    { const auto task = answer(steps); }
    EXPECT_TRUE(steps.empty());
}

TEST_F(TaskTest, SpawnReturnsBeforeTheTaskStarts) {
    spawn(noteAnswer(steps));
    EXPECT_TRUE(steps.empty());
    loop.runUntilIdle();
    EXPECT_EQ(steps, (std::vector<std::string>{"start", "answer", "42"}));
    EXPECT_EQ(spawnedTaskCount(), 0u);
}

Task<int> failing() {
    throw std::runtime_error("broken");
    co_return 0;
}

Task<void> catching(std::vector<std::string>& steps) {
    try {
        co_await failing();
    } catch (const std::runtime_error& error) {
        steps.emplace_back(error.what());
    }
}

TEST_F(TaskTest, ExceptionReachesTheAwaiter) {
    spawn(catching(steps));
    loop.runUntilIdle();
    EXPECT_EQ(steps, std::vector<std::string>{"broken"});
}

struct Noted {
    std::vector<std::string>& steps;
    ~Noted() { steps.emplace_back("dropped"); }
};

Task<void> forever(std::vector<std::string>& steps) {
    const Noted noted{steps};
    co_await withCheckedContinuation<void>([](CheckedContinuation<void>) {});
}

TEST_F(TaskTest, DroppedTaskDropsWhatItHasSuspended) {
    spawn(forever(steps));
    loop.runUntilIdle();
    EXPECT_EQ(spawnedTaskCount(), 1u);
    EXPECT_TRUE(steps.empty());
    dropSpawnedTasks();
    EXPECT_EQ(steps, std::vector<std::string>{"dropped"});
    EXPECT_EQ(spawnedTaskCount(), 0u);
}

TEST_F(TaskTest, ExceptionThatLeavesASpawnedTaskEndsTheProcess) {
    auto fail = []() -> Task<void> { co_await failing(); };
    EXPECT_DEATH(
        {
            spawn(fail());
            loop.runUntilIdle();
        },
        "");
}

class ThreadWorker final : public Worker {
public:
    void perform(std::function<void()> job) override { threads.emplace_back(std::move(job)); }
    void join() { threads.clear(); }

private:
    std::vector<std::jthread> threads;
};

Task<void> workElsewhere(Worker& worker, std::thread::id& there, std::thread::id& back) {
    there = co_await onWorker(worker, [] { return std::this_thread::get_id(); });
    back = std::this_thread::get_id();
}

TEST_F(TaskTest, WorkerRunsElsewhereAndTheFlowGoesOnInTheMainLoop) {
    ThreadWorker worker;
    std::thread::id there;
    std::thread::id back;
    spawn(workElsewhere(worker, there, back));
    loop.runUntilIdle();
    worker.join();
    loop.runUntilIdle();
    EXPECT_NE(there, std::this_thread::get_id());
    EXPECT_EQ(back, std::this_thread::get_id());
}

Task<void> failElsewhere(Worker& worker, std::vector<std::string>& steps) {
    try {
        co_await onWorker(worker, [] { throw std::runtime_error("no disk"); });
    } catch (const std::runtime_error& error) {
        steps.emplace_back(error.what());
    }
}

TEST_F(TaskTest, ExceptionOnTheWorkerReachesTheFlow) {
    ThreadWorker worker;
    spawn(failElsewhere(worker, steps));
    loop.runUntilIdle();
    worker.join();
    loop.runUntilIdle();
    EXPECT_EQ(steps, std::vector<std::string>{"no disk"});
}

} // namespace
} // namespace kelo::platform
