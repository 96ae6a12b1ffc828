// bench-windows: how long what a user does with the main window takes to be on the screen, and how
// long the longest frame of it kept the interface's thread: showing it again, loading its page
// again, changing its colors, signing in.

#include "common/BenchmarkMain.h"
#include "common/Frames.h"
#include "common/KeloWindow.h"
#include "common/PaintWatch.h"
#include "common/Programs.h"
#include "common/Results.h"
#include "common/RunningKelo.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"
#include "testing/screen/Keyboard.h"
#include "windows/Portal.h"
#include "windows/SignIn.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <thread>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

using Clock = WindowWatch::Clock;

constexpr std::chrono::seconds patience{30};
constexpr std::chrono::milliseconds lookEvery{2};
constexpr std::chrono::milliseconds quiet{250};
constexpr std::chrono::seconds longestUnrest{4};

constexpr const char* timesTitle = "from the wish to the screen";

/// Each takes a start.
constexpr int mostSignIns = 10;

constexpr std::uint32_t darkAccentColor = 0x7fc2ac;

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

void addFrames(Results& results, const std::string& subject, const Frames& frames) {
    results.add("longest frame", "ms", subject, milliseconds(frames.longest));
    results.add("frames over 16 ms", "frames", subject, static_cast<double>(frames.janky));
    results.add("all frames", "frames", subject, static_cast<double>(frames.count));
}

class Windows {
public:
    Windows(const fs::path& build, const fs::path& folder, Results& results)
        : results(results),
          moments(folder / "moments"),
          kelo(build, folder, {}, moments.variables()),
          window(kelo.identifier()) {}

    /// The first of each is not counted: what a process does once is in no later one.
    void perform(int repetitions) {
        for (int repetition = -1; repetition < repetitions; ++repetition) {
            counts = repetition >= 0;
            reopen();
            reload();
            changeScheme(true);
            changeScheme(false);
        }
    }

private:
    Clock::time_point begin() {
        settle();
        return Clock::now();
    }

    void settle() {
        paint.awaitQuiet(quiet, Clock::now() + longestUnrest);
        paint.forget();
        window.forget();
    }

    void add(const std::string& subject, Clock::duration time) {
        if (counts)
            results.add(timesTitle, "ms", subject, milliseconds(time));
    }

    void addFrames(const std::string& subject, Clock::time_point begun) {
        settle();
        if (counts)
            bench::addFrames(results, subject, framesSince(moments.read(), begun));
    }

    void reopen() {
        window.close();
        const auto begun = begin();
        portal.activateKelo();
        add("closed window mapped again", window.awaitMapped() - begun);
        add("closed window painted again", window.awaitPainted() - begun);
        addFrames("closed window shown again", begun);
    }

    void reload() {
        const auto begun = begin();
        keyboard.press(screen::keySymbol("F5"));
        add("reload, page's first bytes", await("loadCommitted", begun) - begun);
        add("reload, page loaded", await("loadFinished", begun) - begun);
        addFrames("reload", begun);
    }

    Clock::time_point await(const char* moment, Clock::time_point begun) const {
        while (Clock::now() < begun + patience) {
            if (const auto time = firstMoment(moments.read(), moment, begun))
                return *time;
            std::this_thread::sleep_for(lookEvery);
        }
        throw std::runtime_error(std::string("There was no ") + moment + ".");
    }

    void changeScheme(bool dark) {
        const std::string subject = dark ? "light to dark" : "dark to light";
        const Pixel accented = window.accented();
        const Pixel bar{accented.x, window.described().origin.y + 4};
        const auto barColor = paint.color({bar.x, bar.y});
        const auto begun = begin();
        portal.prefer(dark);
        const auto barPainted = paint.awaitChange({bar.x, bar.y}, barColor, begun + patience);
        const auto pagePainted =
            watch.awaitColor(accented, dark ? darkAccentColor : accentColor, begun + patience);
        if (!barPainted || !pagePainted)
            throw std::runtime_error("The colors did not change.");
        add(subject + ", title bar", *barPainted - begun);
        add(subject + ", page", *pagePainted - begun);
        addFrames(subject, begun);
    }

    Results& results;
    const MomentFile moments;
    const RunningKelo kelo;
    const KeloWindow window;
    const Portal portal;
    const WindowWatch watch;
    const PaintWatch paint;
    const screen::XConnection hands;
    const screen::Keyboard keyboard{hands};
    bool counts = false;
};

void signIn(const fs::path& build, const fs::path& folder, int repetitions, Results& results) {
    for (int start = 0; start < std::min(repetitions, mostSignIns); ++start) {
        const fs::path own = folder / ("sign-in-" + std::to_string(start));
        fs::create_directory(own);
        const SignInTimes times = timeSignIn(build, own);
        results.add(timesTitle, "ms", "sign-in, home's first bytes",
                    milliseconds(times.toFirstBytes));
        results.add(timesTitle, "ms", "sign-in, home painted", milliseconds(times.toPainted));
        addFrames(results, "sign-in", times.frames);
    }
}

void run(const fs::path& build, int repetitions) {
    awaitWindowManager();
    const test::TemporaryFolder folder;
    const rig::DemoService service(build, build / "demo-authority", folder.path() / "service.log");
    Results results("windows");
    Windows(build, folder.path(), results).perform(repetitions);
    signIn(build, folder.path(), repetitions, results);
    results.note(
        "Signing in is with a password, from Enter on; the service takes its time to check "
        "it, as it must.");
    results.note("A frame is what the toolkit's frame clock spends on it in the interface process, "
                 "from its beginning to the end of drawing; more than 16 ms is janky.");
    results.publish(resultFolder(build));
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    return kelo::bench::benchmarkMain(
        count, arguments, "bench-windows", "REPETITIONS",
        [](const kelo::bench::Order& order) { kelo::bench::run(order.build, order.times); });
}
