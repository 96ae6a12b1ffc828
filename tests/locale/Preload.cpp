#include "linux/locale/UserLocale.h"

namespace {

/// Loaded into a test program before it starts, so that the program's own tests run as the program
/// does on a user's desktop: in the locale of the environment.
struct FollowsUserLocale {
    FollowsUserLocale() { kelo::locale::followUserLocale(); }
};
const FollowsUserLocale followsUserLocale;

} // namespace
