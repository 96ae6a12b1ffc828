#include "linux/startup/OwnVariables.h"

#include "component/ScopedVariable.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace kelo::test {

using testing::Contains;
using testing::Not;

TEST(OwnVariables, AreNamedAsLongAsTheyAreAsSet) {
    const ScopedVariable variable("KELO_OWN", std::nullopt);
    startup::setOwnVariable("KELO_OWN", "1");
    EXPECT_STREQ(std::getenv("KELO_OWN"), "1");
    EXPECT_THAT(startup::ownVariables(), Contains("KELO_OWN").Times(1));
    ::setenv("KELO_OWN", "2", 1);
    EXPECT_THAT(startup::ownVariables(), Not(Contains("KELO_OWN")));
    ::unsetenv("KELO_OWN");
    startup::setOwnVariable("KELO_OWN", "1");
    EXPECT_THAT(startup::ownVariables(), Contains("KELO_OWN").Times(1));
}

TEST(OwnVariables, WhatTheUserHasSetStaysTheirs) {
    const ScopedVariable variable("KELO_OWN", "user");
    startup::setOwnVariable("KELO_OWN", "1");
    EXPECT_STREQ(std::getenv("KELO_OWN"), "user");
    EXPECT_THAT(startup::ownVariables(), Not(Contains("KELO_OWN")));
}

TEST(OwnVariables, ChipLibraryIsQuietWhateverTheEnvironmentAsksFor) {
    for (const std::optional<std::string>& asked :
         {std::optional<std::string>(), std::optional<std::string>("all+TRACE")}) {
        const ScopedVariable variable("TSS2_LOG", asked);
        startup::quietChipLibrary();
        EXPECT_STREQ(std::getenv("TSS2_LOG"), "all+NONE");
        EXPECT_THAT(startup::ownVariables(), Contains("TSS2_LOG"));
    }
}

} // namespace kelo::test
