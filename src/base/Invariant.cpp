#include "base/Invariant.h"

#include <cstdio>
#include <cstdlib>

namespace kelo {

void invariantBroken(std::string_view rule, std::source_location where) {
    std::fprintf(stderr, "kelo: %.*s (%s:%u)\n", static_cast<int>(rule.size()), rule.data(),
                 where.file_name(), static_cast<unsigned>(where.line()));
    std::abort();
}

} // namespace kelo
