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

/// Why an update failed. The description is one sentence (or two) for the screen that says what
/// happened and what to do; the cause is for the log and may be empty.
class UpdateError : public LocalizedError {
public:
    UpdateError(UpdateErrorKind kind, std::string description, std::string cause = {})
        : kind_(kind), description_(std::move(description)), cause_(std::move(cause)) {}

    /// Converts any error; a LocalizedError keeps its description. The error must not be null.
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
