#include "linux/bus/Signal.h"
#include "component/bus/BusFixture.h"

#include <gmock/gmock.h>

#include <memory>
#include <vector>

namespace kelo::test {

using testing::ElementsAre;

namespace {

class Signal : public BusFixture {
protected:
    std::unique_ptr<bus::Signal> hear(const bus::Object& object) {
        auto signal = std::make_unique<bus::Signal>(
            connection, object, "Said", [this](const std::string& path, GVariant* values) {
                const char* text = nullptr;
                g_variant_get(values, "(&s)", &text);
                heard.push_back(path + " " + text);
            });
        // From here on the bus hands it on.
        settle(connection);
        return signal;
    }
    bool waitFor(const std::string& last) const {
        return ScopedMainLoop::runUntil([&] { return !heard.empty() && heard.back() == last; });
    }

    std::vector<std::string> heard;
};

} // namespace

TEST_F(Signal, ComesWithItsPathAndValues) {
    const auto signal = hear(speakerAt());
    speaker.say("hello");
    EXPECT_TRUE(waitFor("/speaker hello"));
}

TEST_F(Signal, OfAnotherObjectIsNotHeard) {
    const auto signal = hear(speakerAt());
    speaker.say("no", "/elsewhere");
    speaker.say("yes");
    ASSERT_TRUE(waitFor("/speaker yes"));
    EXPECT_THAT(heard, ElementsAre("/speaker yes"));
}

TEST_F(Signal, WithoutAPathIsHeardFromEveryObject) {
    const auto signal = hear(speakerAt(""));
    speaker.say("one", "/elsewhere");
    speaker.say("two");
    ASSERT_TRUE(waitFor("/speaker two"));
    EXPECT_THAT(heard, ElementsAre("/elsewhere one", "/speaker two"));
}

TEST_F(Signal, OfAnotherInterfaceOrNameIsNotHeard) {
    const auto signal = hear(speakerAt());
    speaker.say("no", Speaker::objectPath, "org.example.Other");
    speaker.say("no", Speaker::objectPath, Speaker::busName, "Shouted");
    speaker.say("yes");
    ASSERT_TRUE(waitFor("/speaker yes"));
    EXPECT_THAT(heard, ElementsAre("/speaker yes"));
}

TEST_F(Signal, OfAnotherProgramIsNotHeard) {
    const auto signal = hear(speakerAt());
    const bus::Connection stranger = bus::openConnection(peer.address());
    g_dbus_connection_emit_signal(stranger.get(), nullptr, Speaker::objectPath, Speaker::busName,
                                  "Said", g_variant_new("(s)", "no"), nullptr);
    settle(stranger);
    speaker.say("yes");
    ASSERT_TRUE(waitFor("/speaker yes"));
    EXPECT_THAT(heard, ElementsAre("/speaker yes"));
}

TEST_F(Signal, IsNotHeardAfterItsEnd) {
    auto signal = hear(speakerAt());
    const auto other = hear(speakerAt("/elsewhere"));
    speaker.say("no");
    speaker.say("yes", "/elsewhere");
    settle(connection);
    signal.reset();
    ASSERT_TRUE(waitFor("/elsewhere yes"));
    EXPECT_THAT(heard, ElementsAre("/elsewhere yes"));
}

TEST_F(Signal, MayBeEndedByItsOwnHandler) {
    const auto other = hear(speakerAt("/elsewhere"));
    int count = 0;
    std::unique_ptr<bus::Signal> signal = std::make_unique<bus::Signal>(
        connection, speakerAt(), "Said", [&](const std::string&, GVariant*) {
            signal.reset();
            ++count;
        });
    settle(connection);
    speaker.say("one");
    speaker.say("two");
    speaker.say("last", "/elsewhere");
    ASSERT_TRUE(waitFor("/elsewhere last"));
    EXPECT_EQ(count, 1);
}

} // namespace kelo::test
