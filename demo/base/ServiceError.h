#pragma once

#include <stdexcept>

namespace kelo::demo {

/// Why the service cannot start or go on, as a sentence for whoever runs it.
class ServiceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace kelo::demo
