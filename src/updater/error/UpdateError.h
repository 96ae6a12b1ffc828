#pragma once

#include "base/Failure.h"

#include <exception>
#include <string>
#include <utility>

namespace kelo::updater {

enum class UpdateErrorKind {
    cancelled,  ///< the user gave up; nothing is shown
    transport,  ///< no connection, no complete reply in time, a certificate that does not hold
    feed,       ///< the feed is not one, or not one that may be read
    archive,    ///< not the bytes that were announced
    signature,  ///< nothing shows that the update comes from the publisher
    storage,    ///< the disk did not keep what was downloaded
    installing, ///< could not be put in place
};

/// Why an update did not happen. The description is one sentence (or two) for the screen that says
/// what happened and what to do; the cause is for the journal and may be empty.
class UpdateError : public LocalizedError {
public:
    UpdateError(UpdateErrorKind kind, std::string description, std::string cause = {})
        : kind_(kind), description_(std::move(description)), cause_(std::move(cause)) {}

    /// The same failure as an UpdateError, whatever it was: a failure of the platform keeps its
    /// sentence. The error must not be null.
    static UpdateError from(const std::exception_ptr& error);

    UpdateErrorKind kind() const { return kind_; }
    std::string localizedDescription() const override { return description_; }
    const std::string& cause() const { return cause_; }
    const char* what() const noexcept override {
        return cause_.empty() ? description_.c_str() : cause_.c_str();
    }

private:
    UpdateErrorKind kind_;
    std::string description_;
    std::string cause_;
};

} // namespace kelo::updater
