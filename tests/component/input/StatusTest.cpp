#include "component/input/InputFixture.h"
#include "linux/input/HotkeyStatus.h"

#include <gtk/gtk.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>

namespace kelo::tests {

namespace {

std::ptrdiff_t openDescriptors() {
    using Entries = std::filesystem::directory_iterator;
    return std::distance(Entries("/proc/self/fd"), Entries());
}

/// A variable of the environment that is gone for a while.
class Without {
public:
    explicit Without(const char* name) : name(name), value(g_getenv(name)) { unsetenv(name); }
    ~Without() { setenv(name, value.c_str(), 1); }
    Without(const Without&) = delete;
    Without& operator=(const Without&) = delete;

private:
    const char* name;
    std::string value;
};

} // namespace

TEST(HotkeyStatus, NamesEverySourceAndSaysWhyOneCannotBeUsed) {
    const auto status = input::hotkeyStatus();
    ASSERT_EQ(status.size(), 3u);
    EXPECT_EQ(status[0].name, "X11");
    EXPECT_TRUE(status[0].availability.available);
    EXPECT_EQ(status[1].name, "evdev");
    EXPECT_EQ(status[2].name, "portal");
    for (const auto& source : status)
        EXPECT_FALSE(source.availability.reason.empty()) << source.name;
}

TEST(HotkeyStatus, SaysWhichSourcesLearnOfOtherKeys) {
    const auto status = input::hotkeyStatus();
    EXPECT_NE(status.at(0).availability.reason.find(
                  "Kelo also learns that another key or a mouse button is pressed"),
              std::string::npos)
        << status.at(0).availability.reason;
}

TEST(HotkeyStatus, WithoutADisplaySaysSo) {
    const Without display("DISPLAY");
    const auto status = input::hotkeyStatus();
    ASSERT_EQ(status.size(), 3u);
    EXPECT_EQ(status[0].name, "X11");
    EXPECT_FALSE(status[0].availability.available);
    EXPECT_NE(status[0].availability.reason.find("no X display"), std::string::npos);
    EXPECT_FALSE(status[0].availability.advice.empty());
}

TEST(HotkeyStatus, LeavesNothingOpen) {
    input::hotkeyStatus();
    const auto before = openDescriptors();
    for (int again = 0; again < 20; ++again)
        input::hotkeyStatus();
    // A connection to the bus is closed by a thread of the library's.
    until("all is closed", [before] { return openDescriptors() <= before; });
}

} // namespace kelo::tests
