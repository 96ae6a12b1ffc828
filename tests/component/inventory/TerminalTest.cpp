#include "linux/inventory/Terminal.h"

#include "component/inventory/TypedInput.h"
#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <sstream>

namespace kelo::tests {
namespace {

/// A terminal in which a program of the test's own asks for a password.
class PasswordQuestion : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(user);
        ::grantpt(user.get());
        ::unlockpt(user.get());
        program = ::fork();
        if (program == 0)
            ask();
    }
    ~PasswordQuestion() override {
        if (program > 0)
            ::kill(program, SIGKILL);
    }

    void awaitQuestion() {
        char byte = 0;
        while (byte != '?')
            ASSERT_EQ(::read(user.get(), &byte, 1), 1);
    }
    void type(std::string_view text) const {
        ASSERT_EQ(::write(user.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    int statusAtEnd() {
        int status = 0;
        ::waitpid(std::exchange(program, -1), &status, 0);
        return status;
    }
    bool showsTyping() const {
        termios settings{};
        ::tcgetattr(user.get(), &settings);
        return (settings.c_lflag & ECHO) != 0;
    }

    static constexpr int understood = 5;

private:
    [[noreturn]] void ask() const {
        ::setsid();
        const int terminal = ::open(::ptsname(user.get()), O_RDWR); // and so the controlling one
        ::dup2(terminal, STDIN_FILENO);
        ::dup2(terminal, STDOUT_FILENO);
        inventory::Terminal asking(std::cout);
        const auto answer = asking.readLine("Password?", false);
        std::_Exit(answer && answer->view() == "secret" ? understood : 0);
    }

    posix::FileDescriptor user{::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)};
    pid_t program = -1;
};

TEST_F(PasswordQuestion, IsAnsweredUnseen) {
    awaitQuestion();
    EXPECT_FALSE(showsTyping());
    type("secret\n");
    const int status = statusAtEnd();
    EXPECT_EQ(WEXITSTATUS(status), understood);
    EXPECT_TRUE(showsTyping());
}

TEST_F(PasswordQuestion, ThatIsBrokenOffLeavesTheTerminalAsItWas) {
    awaitQuestion();
    type("\x03"); // Control and C
    const int status = statusAtEnd();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_TRUE(showsTyping());
}

TEST(Terminal, ReadsOneLineAfterTheOther) {
    const TypedInput input("one\n\ntwo");
    std::ostringstream output;
    inventory::Terminal terminal(output);
    EXPECT_EQ(terminal.readLine("1 ", true)->view(), "one");
    EXPECT_EQ(terminal.readLine("2 ", false)->view(), "");
    EXPECT_EQ(terminal.readLine("3 ", true)->view(), "two");
    EXPECT_FALSE(terminal.readLine("4 ", true));
    EXPECT_EQ(output.str(), "1 2 3 4 ");
}

} // namespace
} // namespace kelo::tests
