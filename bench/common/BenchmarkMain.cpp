#include "common/BenchmarkMain.h"

#include <charconv>
#include <cstring>
#include <exception>
#include <iostream>

namespace kelo::bench {

namespace {

/// 0 for what is no number.
int numberOf(const char* text) {
    int number = 0;
    const char* const end = text + std::strlen(text);
    return std::from_chars(text, end, number).ptr == end ? number : 0;
}

} // namespace

int benchmarkMain(int count, char** arguments, const char* name, const char* counted,
                  const std::function<void(const Order&)>& run) {
    constexpr int wrongUsageStatus = 2;
    const bool isCounted = counted != nullptr;
    const int times = isCounted && count == 3 ? numberOf(arguments[2]) : 1;
    // The other benchmarks are given a number, too, and have no use for it.
    if (count < 2 || count > 3 || (isCounted && count < 3) || times < 1) {
        std::cerr << "Usage: " << name << " BUILD-FOLDER" << (isCounted ? " " : "")
                  << (isCounted ? counted : "") << "\n";
        return wrongUsageStatus;
    }
    try {
        run({std::filesystem::absolute(arguments[1]), times});
    } catch (const std::exception& error) {
        std::cerr << name << ": " << error.what() << "\n";
        return 1;
    }
    return 0;
}

} // namespace kelo::bench
