#include "HelperFixture.h"

#include <sched.h>
#include <sys/mount.h>

// Which PAM service decides, and that none decides when there is none. "other" lets everybody in
// here, as an administrator may have it.

namespace kelo {

namespace {

class PamServiceTest : public PamFixture {
protected:
    PamServiceTest() { std::ofstream(services / "other") << everybody; }
};

class VerifyUserService : public HelperFixture {};

/// A folder of the test in place of /etc/pam.d, for the helper alone.
class SystemsPamService : public HelperFixture {
protected:
    SystemsPamService() {
        std::filesystem::create_directory(systems);
        std::ofstream(systems / "other") << everybody;
    }
    void startWithSystemsFolder() {
        start([this] {
            // A user namespace, so that mounting needs no privilege.
            const auto user = ::geteuid();
            const auto group = ::getegid();
            if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
                ::_exit(notPossibleHere);
            std::ofstream("/proc/self/setgroups") << "deny";
            std::ofstream("/proc/self/uid_map") << user << " " << user << " 1";
            std::ofstream("/proc/self/gid_map") << group << " " << group << " 1";
            if (::mount(systems.c_str(), "/etc/pam.d", nullptr, MS_BIND, nullptr) != 0)
                ::_exit(notPossibleHere);
        });
    }
    /// The byte of the result: "+", "-", "!" or "?". Nothing where mounting is not possible.
    std::string resultWithSystemsFolder() {
        startWithSystemsFolder();
        begin();
        const std::string result = receive().payload;
        const int status = waitForEnd();
        ::close(std::exchange(socket, -1));
        if (WIFEXITED(status) && WEXITSTATUS(status) == notPossibleHere)
            return "";
        return result.substr(0, 1);
    }

    static constexpr int notPossibleHere = 77;
    std::filesystem::path systems = folder.path() / "etc-pam.d";
};

} // namespace

TEST_F(PamServiceTest, WithoutAServiceNothingCanVerifyWhateverOtherAllows) {
    EXPECT_EQ(verify(verifier), Outcome::unavailable);
    std::filesystem::remove_all(services);
    EXPECT_EQ(verify(verifier), Outcome::unavailable);
    EXPECT_TRUE(person.words.empty()) << person.words.front();
}

TEST_F(PamServiceTest, AServiceThatCannotBeReadIsNotReplacedByOther) {
    service("");
    EXPECT_EQ(verify(verifier), Outcome::undecided) << "empty, as a crash may leave it";
    std::filesystem::remove(services / "kelo");
    std::filesystem::create_directory(services / "kelo");
    EXPECT_EQ(verify(verifier), Outcome::undecided) << "a folder";
    std::filesystem::remove(services / "kelo");
    std::filesystem::create_symlink("nowhere", services / "kelo");
    EXPECT_EQ(verify(verifier), Outcome::undecided) << "a link to nothing";
}

TEST_F(PamServiceTest, TheServiceThatIsGoneAfterTheFirstTryDoesNotLeaveTheNextToOther) {
    service(passwordLines());
    person.answers = {"wrong"};
    person.whenAsked = [this] { std::filesystem::remove(services / "kelo"); };
    EXPECT_EQ(verify(verifier), Outcome::undecided);
}

TEST_F(PamServiceTest, TheServiceOfATreeAsksAsTheSystemsLogInDoes) {
    if (!std::filesystem::exists("/etc/pam.d/common-auth"))
        GTEST_SKIP() << "This system has no common-auth.";
    std::filesystem::copy_file(KELO_PAM_SERVICE, services / "kelo");
    // A question, or a word of a fingerprint reader, shows that the log-in's files were found.
    person.leavesQuestionsOpen = true;
    start(verifier);
    ASSERT_TRUE(waitForWords(1));
    EXPECT_FALSE(person.words.empty());
    dropSpawnedTasks();
}

TEST_F(VerifyUserService, ThatIsTakenAwayWhilePamReadsItDoesNotCount) {
    service("@include " + fifo + "\n" + everybody);
    start();
    begin();
    // PAM has opened the service, and waits here for the file that is included.
    const int included = ::open(fifo.c_str(), O_WRONLY | O_CLOEXEC);
    std::filesystem::remove(services / "kelo");
    ::close(included);
    EXPECT_EQ(receive().payload.substr(0, 1), "!");
}

TEST_F(SystemsPamService, GoesBeforeTheOneBesideTheHelper) {
    service("auth required pam_deny.so\naccount required pam_deny.so\n");
    std::ofstream(systems / "kelo") << everybody;
    const std::string result = resultWithSystemsFolder();
    if (result.empty())
        GTEST_SKIP() << "mounting is not possible here";
    EXPECT_EQ(result, "+");
}

TEST_F(SystemsPamService, ThatIsMissingIsNotReplacedByOther) {
    const std::string result = resultWithSystemsFolder();
    if (result.empty())
        GTEST_SKIP() << "mounting is not possible here";
    EXPECT_EQ(result, "?");
}

TEST_F(SystemsPamService, ThatCannotBeReadIsReplacedByNoOther) {
    service(everybody);
    std::filesystem::create_directory(systems / "kelo");
    const std::string result = resultWithSystemsFolder();
    if (result.empty())
        GTEST_SKIP() << "mounting is not possible here";
    EXPECT_EQ(result, "!");
}

} // namespace kelo
