#include "VerificationFixture.h"

#include <csignal>
#include <fstream>

namespace kelo {

using testing::ElementsAre;

namespace {

class MisbehavingHelper : public VerificationFixture {
protected:
    authorization::PamVerifier helperThat(const std::string& behaviour) const {
        auto environment = forSanitizers();
        environment.push_back("KELO_TEST_BEHAVIOUR=" + behaviour);
        environment.push_back("KELO_TEST_LIFELINE=" + fifo);
        return authorization::PamVerifier(KELO_MISBEHAVING_HELPER, environment);
    }
    Outcome outcomeOfHelperThat(const std::string& behaviour) {
        auto verifier = helperThat(behaviour);
        return verify(verifier);
    }

    int lifeline = openLifeline();
    ~MisbehavingHelper() override { ::close(lifeline); }
};

class BrokenTalk : public MisbehavingHelper, public testing::WithParamInterface<const char*> {};

} // namespace

TEST_F(MisbehavingHelper, AResultWithoutQuestionsCountsForItsOwnRun) {
    EXPECT_EQ(outcomeOfHelperThat("verified"), Outcome::verified);
    EXPECT_EQ(outcomeOfHelperThat("undecided"), Outcome::undecided);
    EXPECT_EQ(outcomeOfHelperThat("unavailable"), Outcome::unavailable);
}

TEST_P(BrokenTalk, VerifiesNobody) {
    person.answers = {"secret", "secret"};
    EXPECT_EQ(outcomeOfHelperThat(GetParam()), Outcome::failed);
    EXPECT_TRUE(endsWhenHelperDies(lifeline));
    EXPECT_EQ(person.cancelAction, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Every, BrokenTalk,
    testing::Values("says nothing", "fails", "dies", "verified, then fails", "verified, then dies",
                    "verified, then goes on", "verified, then half a message",
                    "verified, then control characters", "verified twice",
                    "verified without being asked", "unknown result", "garbage",
                    "garbage, then hangs", "control characters, then hangs", "plain text",
                    "half a message", "control characters", "begins itself", "answers itself",
                    "speaks while a question is open", "two questions at once"),
    [](const auto& info) {
        std::string name = info.param;
        std::erase_if(name, [](char c) { return c == ' ' || c == ','; });
        return name;
    });

TEST_F(MisbehavingHelper, OneThatDiesLeavesNobodyTypingToIt) {
    person.leavesQuestionsOpen = true;
    EXPECT_EQ(outcomeOfHelperThat("dies while a question is open"), Outcome::failed);
}

TEST_F(MisbehavingHelper, EachTryIsCalledWrongByWhatItAskedFor) {
    person.answers = {"zoe", "secret"};
    EXPECT_EQ(outcomeOfHelperThat("asks for a name, then for a password, then for a finger"),
              Outcome::failed);
    EXPECT_THAT(person.words, ElementsAre("! Name: ", "e Not recognized. Try again.",
                                          "? Password: ", "e Wrong password. Try again.",
                                          "e Not recognized. Try again."));
}

TEST_F(MisbehavingHelper, AResultThatDoesNotWaitForTheAnswerVerifiesNobody) {
    person.answers = {"secret"};
    person.whenAsked = [this] {
        // The answer comes when the result is there already, and before the loop could look.
        pollfd watched{lifeline, POLLIN, 0};
        EXPECT_EQ(::poll(&watched, 1, 60'000), 1);
    };
    EXPECT_EQ(outcomeOfHelperThat("gives the result right after its question"), Outcome::failed);
}

TEST_F(MisbehavingHelper, OneThatDoesNotListenVerifiesNobodyAndRaisesNoSignal) {
    std::signal(SIGPIPE, SIG_DFL);
    person.answers = {"secret"};
    EXPECT_EQ(outcomeOfHelperThat("stops listening before its question"), Outcome::failed);
    EXPECT_TRUE(endsWhenHelperDies(lifeline));
}

TEST_F(MisbehavingHelper, CancelEndsOneThatHangs) {
    auto verifier = helperThat("hangs");
    start(verifier);
    ASSERT_TRUE(waitForWords(1));
    EXPECT_THAT(person.words, ElementsAre("i Swipe your finger"));
    person.pressCancel();
    ASSERT_TRUE(ScopedMainLoop::runUntil([this] { return outcome.has_value(); }));
    EXPECT_EQ(*outcome, Outcome::cancelled);
    EXPECT_TRUE(endsWhenHelperDies(lifeline));
}

TEST_F(MisbehavingHelper, ADroppedVerificationEndsOneThatHangs) {
    auto verifier = helperThat("hangs");
    start(verifier);
    ASSERT_TRUE(waitForWords(1));
    dropSpawnedTasks();
    EXPECT_TRUE(endsWhenHelperDies(lifeline));
    EXPECT_FALSE(outcome);
}

TEST_F(MisbehavingHelper, OneThatIsNotThereIsUnavailable) {
    authorization::PamVerifier missing(folder.path() / "no-such-program");
    EXPECT_EQ(verify(missing), Outcome::unavailable);
    std::ofstream(folder.path() / "no-program") << "text";
    authorization::PamVerifier noProgram(folder.path() / "no-program");
    EXPECT_EQ(verify(noProgram), Outcome::unavailable);
}

TEST_F(MisbehavingHelper, OneThatIsThereAndDoesNotStartLeavesItUndecided) {
    const std::filesystem::path program = folder.path() / "does-not-start";
    std::ofstream(program) << "#!/no/such/interpreter\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    authorization::PamVerifier verifier(program);
    EXPECT_EQ(verify(verifier), Outcome::undecided);
}

} // namespace kelo
