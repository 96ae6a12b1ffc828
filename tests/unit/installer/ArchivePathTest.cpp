#include "updater/install/ArchivePath.h"

#include <gmock/gmock.h>

namespace kelo::updater {

namespace {
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
} // namespace

TEST(ArchivePath, IsTakenApartWithoutDotsAndDoubledSlashes) {
    EXPECT_THAT(archivePath("./kelo-1.1//bin/./kelo"),
                Optional(ElementsAre("kelo-1.1", "bin", "kelo")));
    EXPECT_THAT(archivePath("./"), Optional(IsEmpty()));
}

TEST(ArchivePath, ThatLeadsOutIsNone) {
    EXPECT_FALSE(archivePath(""));
    EXPECT_FALSE(archivePath("/etc/passwd"));
    EXPECT_FALSE(archivePath(".."));
    EXPECT_FALSE(archivePath("kelo/../../x"));
    EXPECT_FALSE(archivePath("kelo/bin/.."));
}

TEST(ArchivePath, ThatIsLongerOrDeeperThanAnyOfOursIsNone) {
    EXPECT_FALSE(archivePath("kelo/" + std::string(256, 'x')));
    std::string deep = "kelo";
    for (int depth = 0; depth < 40; ++depth)
        deep += "/x";
    EXPECT_FALSE(archivePath(deep));
}

TEST(SymbolicLink, MayLeadAnywhereInItsTree) {
    EXPECT_TRUE(staysInTree({"kelo", "bin", "link"}, "kelo"));
    EXPECT_TRUE(staysInTree({"kelo", "bin", "link"}, "../libexec/kelo"));
    EXPECT_TRUE(staysInTree({"kelo", "share", "doc", "link"}, "../../bin/kelo"));
}

TEST(SymbolicLink, MayNotLeadOutOfIt) {
    EXPECT_FALSE(staysInTree({"kelo", "bin", "link"}, "/usr/bin/kelo"));
    EXPECT_FALSE(staysInTree({"kelo", "bin", "link"}, "../../x"));
    EXPECT_FALSE(staysInTree({"kelo", "link"}, ".."));
    EXPECT_FALSE(staysInTree({"kelo", "link"}, ""));
    EXPECT_FALSE(staysInTree({"link"}, "kelo"));
}

TEST(SymbolicLink, MayNotGoUpAgainAfterANameThatCanBeALinkItself) {
    EXPECT_FALSE(staysInTree({"kelo", "bin", "link"}, "../share/../bin"));
    EXPECT_FALSE(staysInTree({"kelo", "link"}, "other/.."));
}

} // namespace kelo::updater
