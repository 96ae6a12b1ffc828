// Two programs with the whole authenticator at once.
#include "RoadFixture.h"

#include <array>
#include <set>

namespace kelo {

namespace {

constexpr const char* busy =
    "This computer's security chip (TPM) is busy with other programs. Try again in a moment.";

/// The simulated chip has room for three objects, and no kernel that takes turns: where two
/// programs use it at once, one may be told that it is busy, and the other gets through.
class SharedRoad : public RoadFixture {
protected:
    void SetUp() override {
        if (std::filesystem::exists("/etc/pam.d/kelo"))
            GTEST_SKIP() << "Kelo is installed here, and its PAM service goes before the test's.";
    }
    /// Has both do the same work at the same time; what they have made.
    std::vector<nlohmann::json> askBoth(const std::string& verb, const std::string& object) const {
        for (std::size_t number = 0; number < both.size(); ++number)
            ask(both[number], verb, verb == "register" ? object + std::to_string(number) : object);
        std::vector<nlohmann::json> made;
        for (const Child& program : both) {
            const nlohmann::json told = answer(program);
            if (told.contains("id"))
                made.push_back(told);
            else
                EXPECT_EQ(told.value("failure", "the program has ended"), busy);
        }
        return made;
    }
    std::array<Child, 2> both{start(), start()};
};

} // namespace

TEST_F(SharedRoad, TwoProgramsThatRegisterAtOnceLoseNothing) {
    expectRegistration("first");
    std::set<std::string> identifiers;
    for (int round = 0; round < 20; ++round)
        for (const auto& made : askBoth("register", "round" + std::to_string(round) + "-"))
            identifiers.insert(made["id"]);
    EXPECT_GE(identifiers.size(), 20U) << "one of them always gets through";
    EXPECT_EQ(passkeys.all().size(), identifiers.size() + 1);
    expectAllSign();
}

TEST_F(SharedRoad, TwoProgramsThatSignAtOnceBothSign) {
    const auto registered = expectRegistration("first");
    std::size_t signatures = 0;
    for (int round = 0; round < 20; ++round)
        signatures += askBoth("sign", registered["id"]).size();
    EXPECT_GE(signatures, 20U) << "one of them always gets through";
    EXPECT_EQ(passkeys.all().size(), 1U);
    expectAllSign();
}

TEST_F(SharedRoad, OneThatIsKilledDoesNotHoldUpTheOther) {
    expectRegistration("first");
    for (int round = 0; round < 10; ++round) {
        const Child killed = start({"KELO_KILLED_AT_EXCHANGE=" + std::to_string(2 * round + 1)});
        ask(killed, "register", "killed" + std::to_string(round));
        ask(both[0], "register", "other" + std::to_string(round));
        for (const auto& told : {answer(killed), answer(both[0])})
            EXPECT_TRUE(told.is_null() || told.contains("id") || told["failure"] == busy) << told;
        chip.forgetLeftovers();
        const auto next = answerTo("register", "next" + std::to_string(round));
        EXPECT_TRUE(next.contains("id")) << next;
    }
    expectAllSign();
}

/// Several times, because not every time the two meet.
class FirstPasskeys : public SharedRoad, public testing::WithParamInterface<int> {};

TEST_P(FirstPasskeys, OfTwoProgramsAtOnceBothSign) {
    EXPECT_FALSE(askBoth("register", "first").empty());
    expectAllSign();
}
INSTANTIATE_TEST_SUITE_P(Rounds, FirstPasskeys, testing::Range(0, 30));

} // namespace kelo
