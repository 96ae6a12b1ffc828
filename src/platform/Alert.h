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

/// Return code of an alert's first button. Each further button's code is one higher.
inline constexpr int alertFirstButtonReturn = 1000;

/// A modal alert.
struct Alert {
    std::string messageText;
    std::string informativeText;
    /// The first is the default button, which Enter presses. Escape and closing the dialog press
    /// the last. If empty, the platform shows its own acknowledgement button.
    std::vector<std::string> buttons = {};
    std::optional<SecureTextField> accessoryView = std::nullopt;
    /// The field has the keyboard focus when the alert opens.
    bool accessoryIsInitialFirstResponder = false;
};

struct AlertOutcome {
    int returnCode = 0;
    /// The text of the field when the alert was closed; empty without a field.
    SecretText fieldText;
};

/// Shows alerts. While one is open, the program's windows take no input.
class AlertPresenter {
public:
    virtual ~AlertPresenter() = default;
    virtual Task<AlertOutcome> runModal(Alert alert) = 0;
};

} // namespace kelo::platform
