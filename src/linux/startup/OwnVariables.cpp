#include "linux/startup/OwnVariables.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace kelo::startup {

namespace {

using Variable = std::pair<std::string, std::string>;

std::vector<Variable>& setHere() {
    static std::vector<Variable> variables;
    return variables;
}

bool isAsSet(const Variable& variable) {
    const char* const value = std::getenv(variable.first.c_str());
    return value && value == std::string_view(variable.second);
}

} // namespace

void setOwnVariable(const char* name, const char* value) {
    if (std::getenv(name))
        return;
    ::setenv(name, value, 1);
    std::erase_if(setHere(), [name](const Variable& former) { return former.first == name; });
    setHere().emplace_back(name, value);
}

std::vector<std::string> ownVariables() {
    std::vector<std::string> names;
    for (const Variable& variable : setHere())
        if (isAsSet(variable))
            names.push_back(variable.first);
    return names;
}

void quietChipLibrary() {
    // It has no function for this. Each of its files reads the variable when it first has something
    // to say, so the variable has to stay.
    ::unsetenv("TSS2_LOG");
    setOwnVariable("TSS2_LOG", "all+NONE");
}

} // namespace kelo::startup
