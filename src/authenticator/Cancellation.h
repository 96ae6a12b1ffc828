#pragma once

#include "platform/Cancellation.h"

namespace kelo::authenticator {

using platform::Cancellation;
using platform::untilCancelled;

} // namespace kelo::authenticator
