#pragma once

#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string_view>

namespace kelo::tests {

/// What a user types: the standard input of this process, until it is destroyed.
class TypedInput {
public:
    explicit TypedInput(std::string_view text) : former(::dup(STDIN_FILENO)) {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0 || ::write(ends[1], text.data(), text.size()) < 0)
            throw std::runtime_error("no pipe");
        ::dup2(ends[0], STDIN_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
    }
    ~TypedInput() {
        ::dup2(former, STDIN_FILENO);
        ::close(former);
    }
    TypedInput(const TypedInput&) = delete;
    TypedInput& operator=(const TypedInput&) = delete;

private:
    int former;
};

} // namespace kelo::tests
