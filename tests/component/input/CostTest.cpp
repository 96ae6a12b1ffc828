#include "component/input/InputFixture.h"
#include "linux/input/xkb/X11KeyboardFocus.h"

#include <X11/keysym.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <iterator>

namespace kelo::tests {

namespace {

using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::duration<double, std::nano>;

std::ptrdiff_t openDescriptors() {
    using Entries = std::filesystem::directory_iterator;
    return std::distance(Entries("/proc/self/fd"), Entries());
}

} // namespace

class Cost : public InputFixture {};

TEST_F(Cost, AThousandStartsShareOneConnectionAndHearEachChangeOnce) {
    watch();
    const auto before = openDescriptors();
    long calls = 0;
    for (int start = 0; start < 1000; ++start) {
        monitors.addGlobalMonitor(platform::event_mask::flagsChanged,
                                  [&calls](const platform::Event&) { ++calls; });
        monitors.addLocalMonitor(platform::event_mask::flagsChanged,
                                 [&calls](const platform::EventPointer& event) {
                                     ++calls;
                                     return event;
                                 });
    }
    EXPECT_EQ(openDescriptors(), before);
    focusOther();
    keyboard.tap(XK_Control_L);
    EXPECT_EQ(seen().size(), 2u);
    // Two changes of the key, and two of the one that seen() presses after it.
    EXPECT_EQ(calls, 4 * 1000);
}

TEST_F(Cost, OfAChangeIsThatOfItsHandlers) {
    input::ModifierSource::Handler tell;
    struct Ours final : input::KeyboardFocus {
        bool isOurs() const override { return true; }
    };
    struct Source final : input::ModifierSource {
        explicit Source(Handler& tell) : tell(tell) {}
        std::string name() const override { return "told"; }
        input::Availability availability() const override { return {true, "", ""}; }
        bool coversOwnWindows() const override { return true; }
        bool start(Handler handler) override {
            tell = std::move(handler);
            return true;
        }
        Handler& tell;
    };
    input::KeyboardMonitors many([&tell] {
        input::KeyboardWatch watch;
        watch.focus = std::make_unique<Ours>();
        watch.everyProgram.push_back(std::make_unique<Source>(tell));
        return watch;
    });
    constexpr int count = 2000;
    long calls = 0;
    for (int monitor = 0; monitor < count; ++monitor)
        many.addLocalMonitor(platform::event_mask::flagsChanged,
                             [&calls](const platform::EventPointer& event) {
                                 ++calls;
                                 return event;
                             });
    constexpr int changes = 200;
    const auto begin = Clock::now();
    for (int change = 0; change < changes; ++change)
        tell(change % 2 == 0 ? control : 0);
    const Nanoseconds each = (Clock::now() - begin) / static_cast<double>(changes) / count;
    EXPECT_EQ(calls, static_cast<long>(count) * changes);
    std::cout << "a handler costs " << each.count() << " ns, of " << count << "\n";
    EXPECT_LT(each.count(), 5000) << "something other than the handlers takes time";
}

TEST_F(Cost, OfTheFocusIsARoundTrip) {
    const input::X11KeyboardFocus focus(gdk_display_get_default());
    constexpr int times = 1000;
    const auto begin = Clock::now();
    for (int time = 0; time < times; ++time)
        focus.isOurs();
    const Nanoseconds each = (Clock::now() - begin) / static_cast<double>(times);
    std::cout << "a look at the focus costs " << each.count() / 1000 << " us\n";
    EXPECT_LT(each.count(), 20e6);
}

} // namespace kelo::tests
