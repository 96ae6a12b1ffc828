#pragma once

#include <exception>
#include <string>

namespace kelo {

/// An error with a text for the person in front of the screen.
class LocalizedError : public std::exception {
public:
    virtual std::string localizedDescription() const = 0;
    const char* what() const noexcept override { return "an error with a localized description"; }
};

/// What to show for an error of any kind: its localized description, or a general sentence for an
/// error that has none. The error must not be null.
std::string localizedDescription(const std::exception_ptr& error);

} // namespace kelo
