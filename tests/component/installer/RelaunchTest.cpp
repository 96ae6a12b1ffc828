#include "component/installer/Trees.h"
#include "updater/tree/ProgramStart.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;

/// Reads the pipe until its last writer is closed, or until the deadline.
std::string readToTheEnd(int pipe) {
    constexpr int deadline = 30000;
    std::string text;
    std::array<char, 512> buffer{};
    pollfd ready{pipe, POLLIN, 0};
    while (::poll(&ready, 1, deadline) > 0) {
        const ssize_t count = ::read(pipe, buffer.data(), buffer.size());
        if (count <= 0)
            return text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return text + "(too late)";
}

class Relaunch : public testing::Test {
protected:
    Relaunch() {
        // The program prints its environment, its session and whether it has our marker open.
        writeFile(program,
                  "#!/bin/sh\n"
                  "case $(ls -l /proc/$$/fd) in *marker*) open=open;; *) open=closed;; esac\n"
                  "set -- $(cat /proc/$$/stat)\n"
                  "[ $6 = $1 ] || [ $6 != $OLD_SESSION ] && session=own\n"
                  "echo \"new $WORD ${UNSET-nothing} $session $open\"\n",
                  0755);
        writeFile(marker, "");
    }

    /// The output of the old program, which ends as given, and of the new one, in order.
    std::string wordsOf(const std::function<void()>& ending) const {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        const pid_t old = ::fork();
        if (old == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            ::close(ends[0]);
            ::close(ends[1]);
            ::setenv("UNSET", "still there", 1);
            // Without O_CLOEXEC, so that it is inherited unless it is closed.
            [[maybe_unused]] const int open = ::open(marker.c_str(), O_RDONLY);
            const std::string session = "OLD_SESSION=" + std::to_string(::getsid(0));
            if (!updater::relaunchAfterThisProcess(program,
                                                   {"WORD=word", "PATH=/usr/bin:/bin", session}))
                std::_Exit(1);
            [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, "old\n", 4);
            ending();
        }
        ::close(ends[1]);
        std::string words = readToTheEnd(ends[0]);
        ::close(ends[0]);
        ::waitpid(old, nullptr, 0);
        return words;
    }

    TreeFolder folder;
    fs::path program = folder / "kelo";
    fs::path marker = folder / "marker";
};

} // namespace

TEST_F(Relaunch, StartsTheNewProgramInASessionOfItsOwnOnceTheOldOneHasEnded) {
    EXPECT_EQ(wordsOf([] { std::_Exit(0); }), "old\nnew word nothing own closed\n");
}

TEST_F(Relaunch, StartsTheNewProgramWhateverEndedTheOldOne) {
    EXPECT_EQ(wordsOf([] { ::kill(::getpid(), SIGKILL); }), "old\nnew word nothing own closed\n");
}

TEST_F(Relaunch, WithoutAProgramEndsWithoutANoise) {
    fs::remove(program);
    EXPECT_EQ(wordsOf([] { std::_Exit(0); }), "old\n");
}

} // namespace kelo::tests
