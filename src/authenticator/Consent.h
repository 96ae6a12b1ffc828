#pragma once

#include "authenticator/Authenticator.h"
#include "base/Failure.h"
#include "base/async/Cancellation.h"
#include "base/async/Task.h"

#include <memory>
#include <optional>
#include <string_view>

namespace kelo::authenticator {

/// The user's part of a ceremony, from the sheet that opens to the sheet that closes. What the user
/// refuses or fails ends as a Failure with its sentence.
class Consent {
public:
    /// Opens no sheet yet. The anchor may be null.
    Consent(const Authenticator& authenticator, std::shared_ptr<platform::Window> anchor);
    ~Consent();
    Consent(const Consent&) = delete;
    Consent& operator=(const Consent&) = delete;

    /// The error of a request that was given up.
    [[noreturn]] static void throwCancelled();

    /// Opens the sheet; the index of the account that the user agreed to.
    Task<std::size_t> confirm(ConsentRequest request);

    /// Asks for proof that it is the user, on the open sheet.
    Task<void> verify();

    /// The result of the task, unless the user cancels on the open sheet before.
    template <typename T>
    Task<T> unlessCancelled(Task<T> task) {
        const Cancellation cancellation;
        sheet->onCancel([cancellation] { cancellation.cancel(); });
        std::optional<T> result = co_await untilCancelled(cancellation, std::move(task));
        sheet->onCancel(nullptr);
        if (!result)
            throwCancelled();
        co_return std::move(*result);
    }

private:
    const Authenticator& authenticator;
    std::shared_ptr<platform::Window> anchor;
    std::unique_ptr<PasskeySheet> sheet;
};

} // namespace kelo::authenticator
