#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace kelo::test {

/// Sets an environment variable for the length of a test; nothing: unset.
class ScopedVariable {
public:
    ScopedVariable(const char* name, std::optional<std::string> value) : name(name) {
        if (const char* current = std::getenv(name))
            before = current;
        put(value);
    }
    ~ScopedVariable() { put(before); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void put(const std::optional<std::string>& value) {
        if (value)
            setenv(name, value->c_str(), 1);
        else
            unsetenv(name);
    }
    const char* name;
    std::optional<std::string> before;
};

} // namespace kelo::test
