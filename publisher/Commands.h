#pragma once

#include "publisher/Arguments.h"

#include <iosfwd>

namespace kelo::publisher {

/// Does what the arguments ask for. Results go to output, remarks that leave the result good to
/// remarks. Throws Failure.
void run(const Arguments& arguments, std::ostream& output, std::ostream& remarks);

} // namespace kelo::publisher
