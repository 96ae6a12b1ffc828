#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace kelo::rig {

/// A text that does not stand in this process's memory as itself, so that a search there finds only
/// what others have left.
class DisguisedText {
public:
    /// A new text of lower-case letters, another in each process.
    static DisguisedText random(std::size_t length);
    /// Of a text that this process knows anyway.
    static DisguisedText of(std::string_view text);

    std::string plain() const;
    char at(std::size_t index) const;
    std::size_t size() const { return disguised.size(); }
    bool standsAt(const char* place) const;

private:
    std::string disguised;
};

/// Where the text stands in the memory that a process may write to: each place with its mapping and
/// what is around it. Throws std::runtime_error if the memory may not be read.
std::vector<std::string> findInMemory(pid_t process, const DisguisedText& text);

} // namespace kelo::rig
