#pragma once

#include "base/SecretText.h"
#include "base/async/Task.h"

#include <optional>
#include <string>
#include <vector>

namespace kelo::platform {

/// A single-line masked field in an alert. Sizes in points.
struct SecureTextField {
    double width = 0;
    double height = 0;
    std::string placeholder;
};

/// Return code of an alert's first button; the second gives one more, and so on.
inline constexpr int alertFirstButtonReturn = 1000;

/// What a modal alert says and offers.
struct Alert {
    std::string messageText;
    std::string informativeText;
    /// First the default one, which Enter presses. Empty: the platform's own acknowledgement
    /// button. Escape and closing the dialog press the last of several, or the only one.
    std::vector<std::string> buttons = {};
    std::optional<SecureTextField> accessoryView = std::nullopt;
    /// The field has the keyboard focus when the alert opens.
    bool accessoryIsInitialFirstResponder = false;
};

struct AlertOutcome {
    int returnCode = 0;
    /// What stood in the field when the alert ended; empty without a field.
    SecretText fieldText;
};

/// Shows alerts. The windows of the program take no input while one is up.
class AlertPresenter {
public:
    virtual ~AlertPresenter() = default;
    virtual Task<AlertOutcome> runModal(Alert alert) = 0;
};

} // namespace kelo::platform
