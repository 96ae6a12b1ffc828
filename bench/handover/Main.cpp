// bench-handover: how soon a command in a shell has its effect in the Kelo that already runs, and
// how long commands take that need none, beside the least that any process takes to start and end.

#include "common/BenchmarkMain.h"
#include "common/KeloWindow.h"
#include "common/PaintWatch.h"
#include "common/PanelWatch.h"
#include "common/Programs.h"
#include "common/Results.h"
#include "common/RunningKelo.h"
#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"

#include <cstdio>
#include <stdexcept>
#include <string>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

using Clock = WindowWatch::Clock;

constexpr std::chrono::seconds patience{30};
constexpr std::chrono::milliseconds quiet{150};
constexpr std::chrono::seconds longestUnrest{3};
constexpr int panelWidth = 640;
constexpr int panelHeight = 620;

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

class Handover {
public:
    Handover(const fs::path& build, const fs::path& folder, Results& results)
        : program(build / "kelo"),
          log(folder / "command.log"),
          environment(ownFolders(folder / "kelo")),
          results(results),
          kelo(build, folder),
          window(kelo.identifier()) {}

    /// The first of each is not counted: what a process does once is in no later one.
    void perform(int repetitions) {
        for (int repetition = -1; repetition < repetitions; ++repetition) {
            counts = repetition >= 0;
            showPanel();
            reopenWindow();
            runToEnd("kelo --help", {program, "--help"});
            runToEnd("kelo --version", {program, "--version"});
            runToEnd("floor: /bin/true", {"/bin/true"});
        }
    }

private:
    void settle() {
        paint.awaitQuiet(quiet, Clock::now() + longestUnrest);
        paint.forget();
        panel.forget();
        window.forget();
    }

    void add(const std::string& quantity, const std::string& subject, Clock::duration time) {
        if (counts)
            results.add(quantity, "ms", subject, milliseconds(time));
    }

    void showPanel() {
        settle();
        const auto asked = Clock::now();
        rig::ChildProcess showing({program, "--widget"}, environment, log);
        add("command to effect", "kelo --widget, panel mapped", panel.awaitShown() - asked);
        awaitEnd(showing);
        settle();
        const auto askedAgain = Clock::now();
        rig::ChildProcess hiding({program, "--widget"}, environment, log);
        add("command to effect", "kelo --widget, panel unmapped", panel.awaitHidden() - askedAgain);
        awaitEnd(hiding);
    }

    void reopenWindow() {
        window.close();
        settle();
        const auto asked = Clock::now();
        rig::ChildProcess command({program}, environment, log);
        const auto mapped = window.awaitMapped();
        const auto painted = window.awaitPainted();
        add("command to effect", "kelo, closed window mapped", mapped - asked);
        add("command to effect", "kelo, its page painted", painted - asked);
        awaitEnd(command);
    }

    void runToEnd(const std::string& name, const std::vector<std::string>& command) {
        const auto begun = Clock::now();
        rig::ChildProcess process(command, environment, log);
        awaitEnd(process);
        add("process to its end", name, Clock::now() - begun);
    }

    static void awaitEnd(rig::ChildProcess& process) {
        if (process.awaitExit(patience) != 0)
            throw std::runtime_error("A command failed: " + process.printed());
    }

    const fs::path program;
    const fs::path log;
    const std::map<std::string, std::string> environment;
    Results& results;
    const RunningKelo kelo;
    KeloWindow window;
    PanelWatch panel{panelWidth, panelHeight};
    PaintWatch paint;
    bool counts = false;
};

void run(const fs::path& build, int repetitions) {
    awaitWindowManager();
    const test::TemporaryFolder folder;
    const rig::DemoService service(build, build / "demo-authority", folder.path() / "service.log");
    Results results("handover");
    Handover(build, folder.path(), results).perform(repetitions);
    results.note("Kelo runs with its window and its hotkey. A time begins before fork().");
    results.publish(resultFolder(build));
}

} // namespace

} // namespace kelo::bench

int main(int count, char** arguments) {
    return kelo::bench::benchmarkMain(
        count, arguments, "bench-handover", "REPETITIONS",
        [](const kelo::bench::Order& order) { kelo::bench::run(order.build, order.times); });
}
