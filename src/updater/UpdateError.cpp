#include "updater/UpdateError.h"

#include "platform/PlatformError.h"

namespace kelo::updater {

namespace {

UpdateErrorKind kindOf(platform::PlatformErrorKind kind) {
    switch (kind) {
    case platform::PlatformErrorKind::cancelled:
        return UpdateErrorKind::cancelled;
    case platform::PlatformErrorKind::storage:
        return UpdateErrorKind::storage;
    default:
        return UpdateErrorKind::transport;
    }
}

} // namespace

UpdateError UpdateError::from(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const UpdateError& known) {
        return known;
    } catch (const platform::PlatformError& known) {
        return {kindOf(known.kind()), known.localizedDescription(), known.cause()};
    } catch (const std::exception& unknown) {
        return {UpdateErrorKind::installing, platform::localizedDescription(error), unknown.what()};
    } catch (...) {
        return {UpdateErrorKind::installing, platform::localizedDescription(error)};
    }
}

} // namespace kelo::updater
