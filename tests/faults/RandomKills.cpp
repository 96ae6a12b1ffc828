#include "faults/RandomKills.h"

#include <cstdlib>
#include <utility>

namespace kelo::faults {

namespace {

std::uint64_t numberIn(const char* variable, std::uint64_t otherwise) {
    const char* text = std::getenv(variable);
    return text ? std::stoull(text) : otherwise;
}

} // namespace

AfterAWhile::AfterAWhile(std::chrono::microseconds time, std::function<void()> action)
    : thread([this, time, action = std::move(action)](const std::stop_token& stop) {
          std::unique_lock lock(mutex);
          never.wait_for(lock, stop, time, [] { return false; });
          if (!stop.stop_requested())
              action();
      }) {}

RandomInstants::RandomInstants(int usualCount)
    : begin(numberIn("KELO_FAULT_SEED", std::random_device{}())),
      wanted(
          static_cast<int>(numberIn("KELO_FAULT_KILLS", static_cast<std::uint64_t>(usualCount)))),
      numbers(begin) {}

std::chrono::microseconds RandomInstants::next(std::chrono::microseconds lengthOfRoad) {
    std::uniform_int_distribution<std::int64_t> any(0, lengthOfRoad.count());
    return std::chrono::microseconds(any(numbers));
}

std::string RandomInstants::describe(int number, std::chrono::microseconds instant) const {
    return "seed " + std::to_string(begin) + ", kill " + std::to_string(number) + " after " +
           std::to_string(instant.count()) + " microseconds";
}

} // namespace kelo::faults
