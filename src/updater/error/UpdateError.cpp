#include "updater/error/UpdateError.h"

#include "base/Failure.h"

namespace kelo::updater {

namespace {

UpdateErrorKind kindOf(FailureKind kind) {
    switch (kind) {
    case FailureKind::cancelled:
        return UpdateErrorKind::cancelled;
    case FailureKind::storage:
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
    } catch (const Failure& known) {
        return {kindOf(known.kind()), known.localizedDescription(), known.cause()};
    } catch (const std::exception& unknown) {
        return {UpdateErrorKind::installing, kelo::localizedDescription(error), unknown.what()};
    } catch (...) {
        return {UpdateErrorKind::installing, kelo::localizedDescription(error)};
    }
}

} // namespace kelo::updater
