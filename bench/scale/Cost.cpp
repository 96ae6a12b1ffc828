#include "common/Distribution.h"
#include "scale/Works.h"

namespace kelo::bench {

double costOf(const std::function<void()>& work) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds budget{500};
    constexpr std::size_t least = 3;
    std::vector<double> times;
    const auto begun = Clock::now();
    while (times.size() < least || Clock::now() - begun < budget) {
        const auto before = Clock::now();
        work();
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - before).count());
    }
    return distributionOf(std::move(times)).median;
}

} // namespace kelo::bench
