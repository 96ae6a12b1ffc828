#include "common/Mappings.h"

#include <gtest/gtest.h>

namespace kelo::bench {
namespace {

constexpr const char* smaps =
    R"(55d0-55d4 r-xp 00000000 fd:01 11                       /opt/kelo/bin/kelo
Size:                 16 kB
Rss:                  12 kB
Pss:                   6 kB
Pss_Dirty:             1 kB
Shared_Clean:         12 kB
Shared_Dirty:          0 kB
Private_Clean:         0 kB
Private_Dirty:         0 kB
VmFlags: rd ex mr mw me
7f00-7f10 rw-p 00000000 fd:01 12                       /usr/lib/x/libgtkmm-4.0.so.0.1
Pss:                  20 kB
Shared_Clean:          4 kB
Shared_Dirty:          3 kB
Private_Clean:         5 kB
Private_Dirty:         8 kB
7f10-7f18 rw-p 00000000 00:00 0
Pss:                   7 kB
Private_Dirty:         7 kB
7f20-7f28 rw-p 00000000 00:00 0
Pss:                  90 kB
Private_Dirty:        90 kB
7f30-7f38 r--p 00000000 fd:01 13                       /usr/share/fonts/A B.ttf
Pss:                   2 kB
)";

TEST(Mappings, EachIsReadWithItsSharesAndItsWholeName) {
    const auto mappings = readMappings(smaps);
    ASSERT_EQ(mappings.size(), 5U);
    EXPECT_EQ(mappings[0].name, "/opt/kelo/bin/kelo");
    EXPECT_EQ(mappings[0].share.proportional, 6);
    EXPECT_EQ(mappings[0].share.shared, 12);
    EXPECT_EQ(mappings[1].share.privateDirty, 8);
    EXPECT_EQ(mappings[1].share.privateClean, 5);
    EXPECT_EQ(mappings[1].share.shared, 7);
    EXPECT_EQ(mappings[4].name, "/usr/share/fonts/A B.ttf");
}

TEST(Mappings, MemoryRightBehindALibraryIsTheLibrarys) {
    const auto libraries = byLibrary(readMappings(smaps));
    EXPECT_EQ(libraries.at("libgtkmm-4.0").privateDirty, 15);
    EXPECT_EQ(libraries.at("heap and other memory without a file").privateDirty, 90);
}

TEST(Mappings, GroupsAddUpToTheWhole) {
    const auto mappings = readMappings(smaps);
    double whole = 0;
    for (const auto& mapping : mappings)
        whole += mapping.share.proportional;
    double sum = 0;
    for (const auto& [name, share] : byGroup(mappings))
        sum += share.proportional;
    EXPECT_EQ(sum, whole);
    EXPECT_EQ(whole, 125);
}

TEST(Mappings, LibrariesAreGroupedByWhatTheyAreFor) {
    EXPECT_EQ(groupOf("/usr/lib/x/libgtkmm-4.0.so.0"), "C++ bindings");
    EXPECT_EQ(groupOf("/usr/lib/x/libgtk-4.so.1"), "toolkit");
    EXPECT_EQ(groupOf("/usr/lib/x/libcrypto.so.3"), "cryptography");
    EXPECT_EQ(groupOf("/usr/lib/x/dri/swrast_dri.so"), "renderer");
    EXPECT_EQ(groupOf("/usr/lib/x/libtss2-esys.so.0"), "libraries used now and then");
    EXPECT_EQ(groupOf("/usr/lib/x/libwebkitgtk-6.0.so.4"), "web engine");
    EXPECT_EQ(groupOf("/usr/lib/x/libc.so.6"), "C library and other libraries");
    EXPECT_EQ(groupOf("/opt/kelo/bin/kelo"), "the program itself");
    EXPECT_EQ(groupOf("/usr/share/fonts/A.ttf"),
              "other files (fonts, icons, caches, shared memory)");
    EXPECT_EQ(groupOf("[heap]"), groupOf(""));
    EXPECT_EQ(groupOf("[stack]"), "stack and kernel");
}

} // namespace
} // namespace kelo::bench
