#pragma once

#include "base/Failure.h"

#include <exception>
#include <string>
#include <utility>

namespace kelo::updater {

enum class UpdateErrorKind {
    cancelled,  ///< by the user; nothing is shown
    transport,  ///< no connection, no complete response in time, an invalid certificate
    feed,       ///< not a feed, or a forbidden one
    archive,    ///< not the bytes that were announced
    signature,  ///< no proof that the update comes from the publisher
    storage,    ///< the download could not be written to the disk
    installing, ///< the update could not be installed
};

/// Why an update failed.
class UpdateError : public ErrorOfKind<UpdateErrorKind> {
public:
    using ErrorOfKind::ErrorOfKind;

    /// Converts any error; a LocalizedError keeps its description. The error must not be null.
    static UpdateError from(const std::exception_ptr& error);
};

} // namespace kelo::updater
