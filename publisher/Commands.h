#pragma once

#include "publisher/Arguments.h"

#include <iosfwd>

namespace kelo::publisher {

/// Runs the command. Writes results to output, and warnings that do not spoil the result to
/// remarks. Throws Failure.
void run(const Arguments& arguments, std::ostream& output, std::ostream& remarks);

} // namespace kelo::publisher
