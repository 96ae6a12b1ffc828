#include "updater/tree/CutOffExchange.h"

#include "updater/tree/WorkFolder.h"

#include <exception>

namespace kelo::updater {

void undoExchangeThatWasCutOff(const std::filesystem::path& root,
                               const ExchangeCalls& calls) noexcept {
    try {
        if (const auto work = WorkFolder::take(root); work && work->isCutOff())
            work->endCutOff(calls);
    } catch (const std::exception&) {
        // The program may be there all the same.
    }
}

} // namespace kelo::updater
