#pragma once

#include <stdexcept>

namespace kelo::demo {

/// Why the service cannot start or continue, as a sentence for its operator.
class ServiceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace kelo::demo
