#include "component/packaging/Packages.h"

#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <set>
#include <string>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;
using Json = nlohmann::json;

std::string quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

Outcome pack(const fs::path& folder, const std::string& surroundings) {
    return runCommand("cd " + quoted(folder) + " && " + surroundings +
                      " SOURCE_DATE_EPOCH=1795000000 '" KELO_CPACK "' --config '" KELO_BUILD_FOLDER
                      "/CPackConfig.cmake' -B " +
                      quoted(folder / "packages"));
}

std::string digests(const fs::path& folder) {
    return runCommand("cd " + quoted(folder / "packages") + " && sha256sum *.deb *.tar.zst").output;
}

Json listOf(const fs::path& package) {
    const auto made = runCommand(
        "SOURCE_DATE_EPOCH=1795000000 '" KELO_SOURCE_FOLDER "/scripts/sbom' " + quoted(package));
    EXPECT_EQ(made.status, 0) << made.output;
    return Json::parse(made.output, nullptr, false);
}

/// What the list says in this kind of relation about others, without "SPDXRef-".
std::set<std::string> related(const Json& list, const std::string& kind) {
    std::set<std::string> names;
    for (const auto& relation : list["relationships"])
        if (relation["relationshipType"] == kind)
            for (const auto* end : {"spdxElementId", "relatedSpdxElement"})
                names.insert(relation[end].get<std::string>().substr(8));
    names.erase("kelo");
    return names;
}

} // namespace

// In memory and on the disk, because each file system has an order of its own.
TEST(Packages, ComeOutTheSameWhereverAndWheneverTheyArePacked) {
    const TreeFolder memory;
    const test::TemporaryFolder disk;
    const auto first = pack(memory.path(), "TZ=UTC");
    const auto second = pack(disk.path(), "umask 077; TZ=Asia/Tokyo LC_ALL=C");
    ASSERT_EQ(first.status, 0) << first.output;
    ASSERT_EQ(second.status, 0) << second.output;
    EXPECT_EQ(digests(memory.path()), digests(disk.path()));
    EXPECT_THAT(digests(disk.path()), testing::ContainsRegex("deb\n[^\n]*zst\n"));
    const auto rights =
        runCommand("tar -tvf " + quoted(disk.path() / "packages" / KELO_TREE_NAME) +
                   ".tar.zst | grep -vE '^(-rw-r--r--|-rwxr-xr-x|drwxr-xr-x) 0/0 '");
    EXPECT_EQ(rights.output, "");
}

TEST(SoftwareList, OfThePackageNamesWhatItNeeds) {
    const auto list = listOf(Packages::ofThisBuild().package());
    ASSERT_TRUE(list.is_object());
    EXPECT_EQ(list["spdxVersion"], "SPDX-2.3");
    EXPECT_EQ(list["creationInfo"]["created"], "2026-11-18T11:06:40Z");
    EXPECT_THAT(related(list, "DYNAMIC_LINK"),
                IsSupersetOf({"libwebkitgtk-6.0-4", "libstdc--6", "libpam0g"}));
    EXPECT_THAT(related(list, "RUNTIME_DEPENDENCY_OF"),
                IsSupersetOf({"bubblewrap", "glib-networking"}));
    EXPECT_THAT(related(list, "CONTAINS"), testing::IsEmpty());
    EXPECT_THAT(related(list, "STATIC_LINK"), Contains("nlohmann-json3-dev"));
}

TEST(SoftwareList, OfTheTreeNamesWhatItBrings) {
    const auto list = listOf(Packages::ofThisBuild().archive());
    ASSERT_TRUE(list.is_object());
    EXPECT_THAT(related(list, "CONTAINS"), testing::SizeIs(2));
    EXPECT_THAT(related(list, "CONTAINS"), Contains(testing::StartsWith("libplist")));
    EXPECT_THAT(related(list, "DYNAMIC_LINK"), Not(Contains(testing::StartsWith("libplist"))));
}

TEST(SoftwareList, GivesEachPackageAVersionAndTheWholeADigest) {
    const auto archive = Packages::ofThisBuild().archive();
    const auto list = listOf(archive);
    ASSERT_TRUE(list.is_object());
    std::set<std::string> identifiers{"SPDXRef-DOCUMENT"};
    for (const auto& package : list["packages"]) {
        EXPECT_NE(package["versionInfo"], "");
        identifiers.insert(package["SPDXID"]);
    }
    for (const auto& relation : list["relationships"])
        for (const auto* end : {"spdxElementId", "relatedSpdxElement"})
            EXPECT_THAT(identifiers, Contains(relation[end].get<std::string>()));
    EXPECT_EQ(list["packages"][0]["checksums"][0]["checksumValue"].get<std::string>() + "  " +
                  archive.string() + "\n",
              runCommand("sha256sum " + quoted(archive)).output);
}

} // namespace kelo::tests
