#include "base/Failure.h"

#include "base/Translation.h"

namespace kelo {

std::string localizedDescription(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const LocalizedError& known) {
        return known.localizedDescription();
    } catch (...) {
        return translated("Something unexpected went wrong. Please try again.");
    }
}

} // namespace kelo
