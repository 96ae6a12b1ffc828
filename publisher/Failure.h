#pragma once

#include <stdexcept>

namespace kelo::publisher {

/// An error with a sentence that says what is wrong and what to do.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The command line is invalid.
class UsageError : public Failure {
public:
    using Failure::Failure;
};

} // namespace kelo::publisher
