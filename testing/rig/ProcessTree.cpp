#include "testing/rig/ProcessTree.h"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

namespace kelo::rig {

namespace {

namespace fs = std::filesystem;

/// The number behind "Name:" in one of /proc's lists.
std::uint64_t number(const fs::path& file, const std::string& name) {
    std::ifstream list(file);
    std::string line;
    while (std::getline(list, line)) {
        if (line.starts_with(name + ":"))
            return std::stoull(line.substr(name.size() + 1));
    }
    return 0;
}

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

} // namespace

std::vector<pid_t> processTree(pid_t root) {
    std::multimap<pid_t, pid_t> children;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (isNumber(name))
            children.emplace(static_cast<pid_t>(number(entry.path() / "status", "PPid")),
                             static_cast<pid_t>(std::stol(name)));
    }
    std::vector<pid_t> tree{root};
    for (std::size_t index = 0; index < tree.size(); ++index) {
        const auto [first, last] = children.equal_range(tree[index]);
        for (auto child = first; child != last; ++child)
            tree.push_back(child->second);
    }
    return tree;
}

std::uint64_t proportionalSetSize(pid_t process) {
    return number(fs::path("/proc") / std::to_string(process) / "smaps_rollup", "Pss");
}

std::uint64_t residentSetSize(pid_t process) {
    return number(fs::path("/proc") / std::to_string(process) / "status", "VmRSS");
}

std::string programName(pid_t process) {
    std::ifstream file(fs::path("/proc") / std::to_string(process) / "comm");
    std::string name;
    std::getline(file, name);
    return name;
}

std::size_t threadCount(pid_t process) {
    return number(fs::path("/proc") / std::to_string(process) / "status", "Threads");
}

std::map<std::string, std::size_t> openDescriptors(pid_t process) {
    std::map<std::string, std::size_t> counts;
    std::error_code gone;
    for (const auto& entry :
         fs::directory_iterator(fs::path("/proc") / std::to_string(process) / "fd", gone)) {
        const std::string target = fs::read_symlink(entry.path(), gone);
        // "socket:[4711]" and "pipe:[4711]" differ from one to the next, "anon_inode:[eventfd]"
        // does not.
        const auto number = target.find(":[");
        const bool isNumbered = number != std::string::npos &&
                                std::isdigit(static_cast<unsigned char>(target[number + 2]));
        ++counts[isNumbered ? target.substr(0, number) : target];
    }
    return counts;
}

std::uint64_t voluntarySwitches(pid_t process) {
    std::uint64_t sum = 0;
    std::error_code gone;
    for (const auto& thread :
         fs::directory_iterator(fs::path("/proc") / std::to_string(process) / "task", gone))
        sum += number(thread.path() / "status", "voluntary_ctxt_switches");
    return sum;
}

} // namespace kelo::rig
