#pragma once

#include <stdexcept>

namespace kelo::publisher {

/// A sentence for the publisher that says what is wrong and what to do.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The command line makes no sense.
class UsageError : public Failure {
public:
    using Failure::Failure;
};

} // namespace kelo::publisher
