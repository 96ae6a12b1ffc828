#include "updater/error/UpdateError.h"

#include "base/PlatformError.h"

namespace kelo::updater {

namespace {

UpdateErrorKind kindOf(PlatformErrorKind kind) {
    switch (kind) {
    case PlatformErrorKind::cancelled:
        return UpdateErrorKind::cancelled;
    case PlatformErrorKind::storage:
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
    } catch (const PlatformError& known) {
        return {kindOf(known.kind()), known.localizedDescription(), known.cause()};
    } catch (const std::exception& unknown) {
        return {UpdateErrorKind::installing, kelo::localizedDescription(error), unknown.what()};
    } catch (...) {
        return {UpdateErrorKind::installing, kelo::localizedDescription(error)};
    }
}

} // namespace kelo::updater
