#pragma once

#include "base/async/Continuation.h"
#include "platform/Alert.h"

#include <optional>
#include <string_view>
#include <vector>

namespace kelo::fakes {

/// Alerts that stay up until the test answers them.
class FakeAlerts final : public platform::AlertPresenter {
public:
    Task<platform::AlertOutcome> runModal(platform::Alert alert) override {
        shown.push_back(std::move(alert));
        co_return co_await withCheckedContinuation<platform::AlertOutcome>(
            [&](CheckedContinuation<platform::AlertOutcome> continuation) {
                pending = continuation;
            });
    }

    bool isUp() const { return pending.has_value(); }

    void answer(int returnCode, std::string_view fieldText = {}) {
        const auto continuation = std::exchange(pending, std::nullopt);
        continuation.value().resume({returnCode, SecretText(fieldText)});
    }

    std::vector<platform::Alert> shown;

private:
    std::optional<CheckedContinuation<platform::AlertOutcome>> pending;
};

} // namespace kelo::fakes
