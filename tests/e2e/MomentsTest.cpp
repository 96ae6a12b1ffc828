#include "e2e/ProgramFixture.h"

#include "common/MomentFile.h"
#include "posix/Moments.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kelo::e2e {

namespace {

class Moments : public ProgramFixture {
protected:
    void SetUp() override {
        // No Kelo yet.
        startService();
    }

    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& line : file.read())
            all.push_back(line.name);
        return all;
    }

    const bench::MomentFile file{folder.path() / "moments"};
};

} // namespace

TEST_F(Moments, OfAStartAreToldInTheirOrderAndHoldNothingElse) {
    environment.merge(file.variables());
    startKelo();
    user.awaitLoginPage();
    endKelo();
    const std::string text = bench::fileText(folder.path() / "moments");
    const auto lines = file.read();
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(std::ranges::count(text, '\n')));
    for (const auto& line : lines)
        EXPECT_THAT(posix::momentNames, testing::Contains(line.name));
    EXPECT_TRUE(std::ranges::is_sorted(lines, {}, &bench::MomentLine::time));

    std::vector<std::string> first;
    for (const auto& name : names())
        if (std::ranges::find(first, name) == first.end())
            first.push_back(name);
    EXPECT_THAT(first, testing::UnorderedElementsAreArray(posix::momentNames));
    const auto inOrder = [&](std::initializer_list<const char*> expected) {
        auto place = first.begin();
        for (const char* const name : expected) {
            place = std::find(place, first.end(), name);
            EXPECT_NE(place, first.end()) << name << " came too early";
        }
    };
    inOrder({"mainEntered", "busConnected", "toolkitStarted", "viewMade", "loadStarted",
             "loadCommitted", "loadFinished"});
    inOrder({"toolkitStarted", "windowMapped", "viewMade", "frameBegan", "frameEnded"});
}

TEST_F(Moments, AreNotToldToWhoeverHasNotAsked) {
    // The file is open in Kelo too, but nothing names it.
    startKelo();
    user.awaitLoginPage();
    endKelo();
    EXPECT_THAT(names(), testing::IsEmpty());
}

} // namespace kelo::e2e
