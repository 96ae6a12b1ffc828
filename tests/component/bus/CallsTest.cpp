#include "linux/bus/Calls.h"
#include "component/bus/BusFixture.h"
#include "component/bus/StartingBus.h"

#include <optional>

namespace kelo::test {

namespace {

class Calls : public BusFixture {
protected:
    void ask(const char* method, bus::Calls::Answered answered) const {
        calls->call(connection, speakerAt(), method, nullptr, std::move(answered));
    }
    /// Answers come in the order of the calls: all that were made before have theirs then.
    bool waitForOlderAnswers() const {
        const bus::Calls others;
        bool arrived = false;
        others.call(connection, speakerAt(), "Ask", nullptr,
                    [&](const auto&, const auto&) { arrived = true; });
        return ScopedMainLoop::runUntil([&] { return arrived; });
    }

    std::optional<bus::Calls> calls{std::in_place};
};

} // namespace

TEST_F(Calls, AnswerIsHandedOver) {
    std::string answer;
    ask("Ask", [&](const gobject::GVariantPointer& values, const gobject::GErrorPointer& failure) {
        ASSERT_TRUE(values);
        EXPECT_FALSE(failure);
        const char* text = nullptr;
        g_variant_get(values.get(), "(&s)", &text);
        answer = text;
    });
    EXPECT_TRUE(answer.empty()) << "not before the main loop has run";
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return answer == "yes"; }));
}

TEST_F(Calls, RefusalIsAnErrorWithItsCause) {
    std::string cause;
    ask("Refuse", [&](const auto& values, const auto& failure) {
        EXPECT_FALSE(values);
        ASSERT_TRUE(failure);
        cause = failure->message;
    });
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return !cause.empty(); }));
    EXPECT_NE(cause.find("org.example.No"), std::string::npos) << cause;
}

TEST_F(Calls, NothingIsDeliveredAfterTheirEnd) {
    int delivered = 0;
    const auto count = [&](const auto&, const auto&) { ++delivered; };
    ask("Ask", count);
    ask("Refuse", count);
    calls.reset();
    ASSERT_TRUE(waitForOlderAnswers());
    EXPECT_EQ(delivered, 0);
}

TEST_F(Calls, AnswerThatHasArrivedIsNotDeliveredAfterTheirEnd) {
    int delivered = 0;
    // Both answers are there in the same turn of the loop at the earliest.
    ask("Ask", [&](const auto&, const auto&) {
        ++delivered;
        calls.reset();
    });
    ask("Ask", [&](const auto&, const auto&) { ++delivered; });
    ASSERT_TRUE(waitForOlderAnswers());
    EXPECT_EQ(delivered, 1);
}

TEST_F(Calls, CallStartsNoService) {
    const StartingBus starting(folder.path(), {Speaker::busName, "org.example.Last"});
    const bus::Connection there = bus::openConnection(starting.address());
    bool refused = false;
    calls->call(there, {Speaker::busName, "/", "org.example.Speaker"}, "Ask", nullptr,
                [&](const auto&, const auto& failure) { refused = failure != nullptr; });
    bus::tell(there, {Speaker::busName, "/", "org.example.Speaker"}, "Ask");
    ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return refused; }));
    settle(there);
    ASSERT_TRUE(starting.start("org.example.Last"));
    EXPECT_FALSE(starting.hasStarted(Speaker::busName));
}

TEST_F(Calls, WhatIsToldArrivesThoughTheConnectionIsLetGoAtOnce) {
    bus::tell(connection, speakerAt(), "Ask");
    connection = {};
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return speaker.questions == 1; }));
}

} // namespace kelo::test
