#include "posix/MemoryShield.h"

#include <sys/prctl.h>
#include <sys/resource.h>

namespace kelo::posix {

namespace {

int shields = 0;
int formerDumpable = 1;
rlimit formerCoreLimit{};

} // namespace

MemoryShield::MemoryShield() {
    if (shields++ > 0)
        return;
    formerDumpable = ::prctl(PR_GET_DUMPABLE);
    ::prctl(PR_SET_DUMPABLE, 0);
    // A second bar, for collectors of crashes that look at the limit. The hard limit stays, because
    // it could not be raised again.
    ::getrlimit(RLIMIT_CORE, &formerCoreLimit);
    const rlimit none{0, formerCoreLimit.rlim_max};
    ::setrlimit(RLIMIT_CORE, &none);
}

MemoryShield::~MemoryShield() {
    if (--shields > 0)
        return;
    ::setrlimit(RLIMIT_CORE, &formerCoreLimit);
    // The kernel's third state, for programs that change their user, cannot be asked for.
    if (formerDumpable == 1)
        ::prctl(PR_SET_DUMPABLE, 1);
}

} // namespace kelo::posix
