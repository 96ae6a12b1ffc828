#pragma once

#include "PamFixture.h"

#include "linux/authorization/protocol/VerificationProtocol.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>
#include <utility>

namespace kelo {

/// The helper by itself, without the verifier that would kill it.
class HelperFixture : public PamFixture {
protected:
    /// before: what the child does before it becomes the helper.
    void start(const std::function<void()>& before = [] {}) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        std::vector<std::string> variables = environment();
        child = ::fork();
        if (child == 0) {
            for (std::string& variable : variables)
                ::putenv(variable.data());
            ::dup2(ends[1], STDIN_FILENO);
            ::dup2(ends[1], STDOUT_FILENO);
            before();
            ::execl(helper.c_str(), helper.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        socket = ends[0];
    }
    void send(std::string_view bytes) const {
        EXPECT_EQ(::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }
    void begin() const {
        const auto bytes =
            authorization::encode(authorization::MessageType::begin, std::string(16, 'm'));
        send(std::string_view(bytes.data(), bytes.size()));
    }
    authorization::Message receive() {
        while (true) {
            if (auto message = reader.next())
                return std::move(*message);
            char byte = 0;
            if (::read(socket, &byte, 1) != 1)
                return {authorization::MessageType::result, "the helper closed its end"};
            reader.feed(std::span(&byte, 1));
        }
    }
    int waitForEnd() {
        int status = 0;
        EXPECT_EQ(::waitpid(std::exchange(child, -1), &status, 0) > 0, true);
        return status;
    }
    ~HelperFixture() override {
        if (child > 0)
            ::kill(child, SIGKILL);
        if (socket >= 0)
            ::close(socket);
    }

    pid_t child = -1;
    int socket = -1;
    authorization::MessageReader reader;
};

} // namespace kelo
