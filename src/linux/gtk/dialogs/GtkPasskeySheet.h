#pragma once

#include "authenticator/consent/PasskeySheet.h"
#include "base/Clock.h"

#include <memory>

namespace kelo::gtk {

/// Makes passkey sheets: dialogs above windows of this desktop. A sheet and the tasks that wait for
/// it may be destroyed in any state. The task of a question that is open when the sheet is
/// destroyed never resumes. Main thread only.
class GtkPasskeySheetFactory final : public authenticator::PasskeySheetFactory {
public:
    explicit GtkPasskeySheetFactory(SteadyNow now = std::chrono::steady_clock::now);

    /// If the anchor is null or not on the screen, the sheet has no parent window.
    std::unique_ptr<authenticator::PasskeySheet>
    makeSheet(std::shared_ptr<platform::Window> anchor) override;

private:
    SteadyNow now;
};

} // namespace kelo::gtk
