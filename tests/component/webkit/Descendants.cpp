#include "component/webkit/Descendants.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>

namespace kelo::test {

namespace {

struct Process {
    std::string name;
    pid_t parent = 0;
};

std::map<pid_t, Process> allProcesses() {
    std::map<pid_t, Process> processes;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string number = entry.path().filename().string();
        if (!std::all_of(number.begin(), number.end(), ::isdigit))
            continue;
        std::ifstream file(entry.path() / "stat");
        std::string text;
        std::getline(file, text);
        const auto open = text.find('(');
        const auto close = text.rfind(')');
        if (open == std::string::npos || close == std::string::npos)
            continue;
        // After the name: a blank, the state, a blank, the parent.
        processes[std::stoi(number)] = {text.substr(open + 1, close - open - 1),
                                        std::stoi(text.substr(close + 4))};
    }
    return processes;
}

// The engine gives up, and all of the program with it, if a process goes that it waits for.
bool talksToTheEngine(pid_t process) {
    std::error_code gone;
    const auto threads = std::filesystem::path("/proc") / std::to_string(process) / "task";
    for (const auto& thread : std::filesystem::directory_iterator(threads, gone)) {
        std::ifstream file(thread.path() / "comm");
        std::string name;
        if (std::getline(file, name) && name == "ReceiveQueue")
            return true;
    }
    return false;
}

} // namespace

std::set<pid_t> descendants(const std::string& name) {
    const auto processes = allProcesses();
    std::set<pid_t> found;
    for (const auto& [number, process] : processes) {
        if (process.name != name)
            continue;
        pid_t ancestor = process.parent;
        while (ancestor > 1 && ancestor != getpid() && processes.contains(ancestor))
            ancestor = processes.at(ancestor).parent;
        if (ancestor == getpid())
            found.insert(number);
    }
    return found;
}

int killDescendants(const std::string& name) {
    int killed = 0;
    for (const pid_t number : descendants(name))
        if (talksToTheEngine(number) && kill(number, SIGKILL) == 0)
            ++killed;
    return killed;
}

} // namespace kelo::test
