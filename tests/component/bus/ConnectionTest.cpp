#include "component/bus/BusFixture.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

namespace kelo::test {

using testing::Each;
using testing::SizeIs;

namespace {

class Connection : public BusFixture {
protected:
    bus::SharedConnection::Opened note() {
        return [this](const bus::Connection& made) { opened.push_back(made.get()); };
    }
    bool waitFor(std::size_t count) const {
        return ScopedMainLoop::runUntil([&] { return opened.size() >= count; });
    }

    std::vector<GDBusConnection*> opened;
};

/// An environment variable that is as it was after the test.
class Variable {
public:
    explicit Variable(const char* name) : name(name) {
        if (const char* const value = g_getenv(name))
            before = value;
        else
            wasUnset = true;
    }
    ~Variable() { wasUnset ? g_unsetenv(name) : void(g_setenv(name, before.c_str(), TRUE)); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

    void set(const std::string& value) const { g_setenv(name, value.c_str(), TRUE); }
    void unset() const { g_unsetenv(name); }

private:
    const char* name;
    std::string before;
    bool wasUnset = false;
};

/// A runtime folder for this program alone. GLib reads the variable only once.
class RuntimeFolder final : public testing::Environment {
public:
    void SetUp() override { g_setenv("XDG_RUNTIME_DIR", folder.path().c_str(), TRUE); }

private:
    TemporaryFolder folder;
};
const testing::Environment* const runtimeFolder =
    testing::AddGlobalTestEnvironment(std::make_unique<RuntimeFolder>().release());

} // namespace

TEST_F(Connection, IsOneForAllWhoAsk) {
    const auto shared = std::make_shared<bus::SharedConnection>(peer.address());
    shared->whenOpen(note());
    shared->whenOpen(note());
    EXPECT_THAT(opened, SizeIs(0)) << "not before the main loop has run";
    ASSERT_TRUE(waitFor(2));
    // Gives a second connection, if there were one, the time to be opened.
    for (int times = 0; times < 3; ++times) {
        const auto other = std::make_shared<bus::SharedConnection>(peer.address());
        bool isOpen = false;
        other->whenOpen([&](const bus::Connection&) { isOpen = true; });
        ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return isOpen; }));
    }
    shared->whenOpen(note());
    EXPECT_THAT(opened, SizeIs(2)) << "not at once either";
    ASSERT_TRUE(waitFor(3));
    ASSERT_TRUE(opened.front());
    EXPECT_THAT(opened, Each(opened.front()));
    EXPECT_THAT(opened, SizeIs(3));
}

TEST_F(Connection, IsOpenedThoughTheOneWhoAskedLetsGo) {
    std::make_shared<bus::SharedConnection>(peer.address())->whenOpen(note());
    ASSERT_TRUE(waitFor(1));
    EXPECT_TRUE(opened.front());
}

TEST_F(Connection, ThatCannotBeOpenedIsNull) {
    for (const char* const address : {"", "unix:path=/nowhere/at/all", "nonsense"}) {
        opened.clear();
        const auto shared = std::make_shared<bus::SharedConnection>(address);
        shared->whenOpen(note());
        EXPECT_THAT(opened, SizeIs(0)) << address;
        ASSERT_TRUE(waitFor(1)) << address;
        shared->whenOpen(note());
        ASSERT_TRUE(waitFor(2)) << address;
        EXPECT_THAT(opened, Each(nullptr)) << address;
    }
    EXPECT_FALSE(bus::openConnection("unix:path=/nowhere/at/all"));
    EXPECT_FALSE(bus::openConnection(""));
}

TEST_F(Connection, DoesNotEndTheProgramWithItsBus) {
    auto other = std::make_unique<SessionBus>(folder.path());
    const auto there = bus::openConnection(other->address());
    ASSERT_TRUE(there);
    other.reset();
    EXPECT_TRUE(ScopedMainLoop::runUntil([&] { return g_dbus_connection_is_closed(there.get()); }));
}

TEST_F(Connection, AddressesAreThoseOfTheEnvironment) {
    const Variable session("DBUS_SESSION_BUS_ADDRESS");
    const Variable system("DBUS_SYSTEM_BUS_ADDRESS");
    session.set("unix:path=/one");
    system.set("unix:path=/two");
    EXPECT_EQ(bus::sessionAddress(), "unix:path=/one");
    EXPECT_EQ(bus::systemAddress(), "unix:path=/two");
}

TEST_F(Connection, SessionBusIsInTheRuntimeFolderWhereNothingNamesIt) {
    const Variable session("DBUS_SESSION_BUS_ADDRESS");
    session.unset();
    const std::filesystem::path socket = std::filesystem::path(g_get_user_runtime_dir()) / "bus";
    EXPECT_EQ(bus::sessionAddress(), "") << "and none is started";
    std::ofstream(socket).put(' ');
    EXPECT_EQ(bus::sessionAddress(), "unix:path=" + socket.string());
    std::filesystem::remove(socket);
}

} // namespace kelo::test
