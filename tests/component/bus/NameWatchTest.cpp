#include "linux/bus/NameWatch.h"
#include "component/bus/BusFixture.h"
#include "component/bus/StartingBus.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <vector>

namespace kelo::test {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class NameWatch : public BusFixture {
protected:
    std::unique_ptr<bus::NameWatch> watch(const std::string& address,
                                          bus::Starting starting = bus::Starting::never,
                                          const char* name = "org.example.Comer") {
        const auto shared = std::make_shared<bus::SharedConnection>(address);
        return std::make_unique<bus::NameWatch>(
            *shared, name, starting,
            [this](const bus::Connection& opened, const std::string& owner) {
                owners.push_back(owner);
                isConnected = static_cast<bool>(opened);
            });
    }
    bool waitFor(std::size_t count) const {
        return ScopedMainLoop::runUntil([&] { return owners.size() >= count; });
    }
    std::string ours() const { return g_dbus_connection_get_unique_name(peer.connection()); }
    guint own(const char* name) const {
        return g_bus_own_name_on_connection(peer.connection(), name, G_BUS_NAME_OWNER_FLAGS_NONE,
                                            nullptr, nullptr, nullptr, nullptr);
    }

    std::vector<std::string> owners;
    bool isConnected = false;
};

} // namespace

TEST_F(NameWatch, TellsOfTheOwnerAndOfEachChange) {
    const auto watching = watch(peer.address());
    EXPECT_THAT(owners, IsEmpty()) << "not before the main loop has run";
    ASSERT_TRUE(waitFor(1));
    const guint owned = own("org.example.Comer");
    ASSERT_TRUE(waitFor(2));
    EXPECT_TRUE(isConnected);
    g_bus_unown_name(owned);
    ASSERT_TRUE(waitFor(3));
    EXPECT_THAT(owners, ElementsAre("", ours(), ""));
    EXPECT_TRUE(isConnected);
}

TEST_F(NameWatch, OwnerThatWasThereBeforeIsToldFirst) {
    const auto watching = watch(peer.address(), bus::Starting::never, Speaker::busName);
    ASSERT_TRUE(waitFor(1));
    EXPECT_THAT(owners, ElementsAre(ours()));
}

TEST_F(NameWatch, BusThatIsNotThereIsToldOnceAndLater) {
    for (const char* const address : {"", "unix:path=/nowhere/at/all", "nonsense"}) {
        owners.clear();
        isConnected = true;
        const auto watching = watch(address);
        EXPECT_THAT(owners, IsEmpty()) << address;
        ASSERT_TRUE(waitFor(1)) << address;
        EXPECT_THAT(owners, ElementsAre("")) << address;
        EXPECT_FALSE(isConnected) << address;
    }
}

TEST_F(NameWatch, BusThatGoesTakesTheOwnerWithIt) {
    std::optional<SessionBus> other(std::in_place, folder.path());
    std::optional<Speaker> there(std::in_place, *other);
    const auto watching = watch(other->address(), bus::Starting::never, Speaker::busName);
    ASSERT_TRUE(
        ScopedMainLoop::runUntil([&] { return !owners.empty() && !owners.back().empty(); }));
    const auto before = owners.size();
    there.reset();
    other.reset();
    ASSERT_TRUE(waitFor(before + 1));
    EXPECT_EQ(owners.back(), "");
}

TEST_F(NameWatch, StartsNoServiceUnlessItIsAskedTo) {
    const StartingBus starting(folder.path(), {"org.example.Comer", "org.example.Last"});
    const auto watching = watch(starting.address());
    ASSERT_TRUE(waitFor(1));
    ASSERT_TRUE(starting.start("org.example.Last"));
    EXPECT_FALSE(starting.hasStarted("org.example.Comer"));
    const auto user = watch(starting.address(), bus::Starting::ifNeeded);
    EXPECT_TRUE(starting.waitUntilStarted("org.example.Comer"));
}

TEST_F(NameWatch, TellsNothingAfterItsEnd) {
    // Ended at each turn on the way to its first report, and at one after it.
    for (std::size_t turns = 0; owners.empty(); ++turns) {
        ASSERT_LT(turns, 1000U);
        auto watching = watch(peer.address());
        for (std::size_t turn = 0; turn < turns && owners.empty(); ++turn)
            g_main_context_iteration(nullptr, TRUE);
        const auto before = owners.size();
        watching.reset();
        const guint owned = own("org.example.Comer");
        ASSERT_TRUE(peer.waitForName("org.example.Comer"));
        g_bus_unown_name(owned);
        ASSERT_TRUE(peer.waitForNoName("org.example.Comer"));
        ASSERT_THAT(owners, SizeIs(before)) << turns;
    }
}

TEST_F(NameWatch, MayBeEndedByItsOwnReport) {
    for (const std::string& address : {peer.address(), std::string()}) {
        std::unique_ptr<bus::NameWatch> watching;
        const auto shared = std::make_shared<bus::SharedConnection>(address);
        // What the report holds must outlast the watch.
        const auto held = std::make_shared<int>(0);
        watching =
            std::make_unique<bus::NameWatch>(*shared, Speaker::busName, bus::Starting::never,
                                             [&, held](const bus::Connection&, const std::string&) {
                                                 watching.reset();
                                                 ++*held;
                                             });
        ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return *held > 0; }));
        EXPECT_EQ(*held, 1);
    }
}

} // namespace kelo::test
