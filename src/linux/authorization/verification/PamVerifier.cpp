#include "linux/authorization/verification/PamVerifier.h"

#include "authenticator/keys/Cryptography.h"
#include "base/Translation.h"
#include "base/async/Cancellation.h"
#include "bundle/ProgramPlace.h"
#include "linux/authorization/verification/HelperProcess.h"

#include <gio/gio.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace kelo::authorization {

namespace {

using authenticator::VerificationConversation;
using authenticator::VerificationOutcome;
using Answer = std::optional<SecretText>;

RunNonce randomNonce() {
    RunNonce nonce;
    authenticator::fillRandom(reinterpret_cast<std::uint8_t*>(nonce.data()), nonce.size());
    return nonce;
}

VerificationOutcome outcomeOf(HelperResult result) {
    switch (result) {
    case HelperResult::verified:
        return VerificationOutcome::verified;
    case HelperResult::undecided:
        return VerificationOutcome::undecided;
    case HelperResult::unavailable:
        return VerificationOutcome::unavailable;
    case HelperResult::failed:
        break;
    }
    return VerificationOutcome::failed;
}

/// One verification. Passes messages between the helper and the user.
class VerificationRun {
public:
    VerificationRun(std::unique_ptr<HelperProcess> helper, VerificationConversation& conversation)
        : helper(std::move(helper)), conversation(conversation) {}

    Task<VerificationOutcome> run() {
        const RunNonce nonce = randomNonce();
        helper->send(MessageType::begin, std::string_view(nonce.data(), nonce.size()));
        while (const std::optional<Message> message = co_await helper->receive()) {
            if (message->type == MessageType::result)
                co_return co_await finish(decodeResult(message->payload, nonce));
            const std::optional<VerificationOutcome> end = co_await handle(*message);
            if (end)
                co_return *end;
        }
        co_return VerificationOutcome::failed;
    }

private:
    Task<std::optional<VerificationOutcome>> handle(Message message) {
        switch (message.type) {
        case MessageType::information:
            conversation.showInformation(std::move(message.payload));
            break;
        case MessageType::error:
            conversation.showError(std::move(message.payload));
            break;
        case MessageType::tryAgain:
            conversation.showError(askedPassword ? translated("Wrong password. Try again.")
                                                 : translated("Not recognized. Try again."));
            askedPassword = false;
            break;
        case MessageType::hiddenPrompt:
        case MessageType::visiblePrompt:
            co_return co_await ask(std::move(message));
        case MessageType::begin:
        case MessageType::answer:
        case MessageType::result:
            co_return VerificationOutcome::failed;
        }
        co_return std::nullopt;
    }

    Task<std::optional<VerificationOutcome>> ask(Message message) {
        askedPassword |= message.type == MessageType::hiddenPrompt;
        authenticator::VerificationPrompt prompt;
        prompt.text = std::move(message.payload);
        prompt.echo = message.type == MessageType::visiblePrompt;
        // If the helper gives up while the user types, nobody needs the answer any more.
        std::optional<Answer> given =
            co_await untilCancelled(helper->closed(), conversation.ask(std::move(prompt)));
        if (!given || helper->spokeOutOfTurn())
            co_return VerificationOutcome::failed;
        if (!*given)
            co_return VerificationOutcome::cancelled;
        const std::string_view answer = (*given)->view();
        if (answer.size() > longestPayload || answer.find('\0') != std::string_view::npos ||
            !helper->send(MessageType::answer, answer))
            co_return VerificationOutcome::failed;
        co_return std::nullopt;
    }

    Task<VerificationOutcome> finish(std::optional<HelperResult> result) {
        const std::optional<Message> more = co_await helper->receive();
        if (!result || more)
            co_return VerificationOutcome::failed;
        const bool endedWell = co_await helper->endedWell();
        co_return endedWell ? outcomeOf(*result) : VerificationOutcome::failed;
    }

    std::unique_ptr<HelperProcess> helper;
    VerificationConversation& conversation;
    /// Whether this try asked for a password. A fingerprint reader does not.
    bool askedPassword = false;
};

Task<VerificationOutcome> runVerification(std::unique_ptr<HelperProcess> helper,
                                          VerificationConversation& conversation) {
    VerificationRun run(std::move(helper), conversation);
    co_return co_await run.run();
}

} // namespace

PamVerifier::PamVerifier(std::filesystem::path helper, std::vector<std::string> extraEnvironment)
    : helper(std::move(helper)), extraEnvironment(std::move(extraEnvironment)) {}

Task<VerificationOutcome> PamVerifier::verify(VerificationConversation& conversation) {
    std::unique_ptr<HelperProcess> process = HelperProcess::start(helper, extraEnvironment);
    if (!process) {
        // A helper that is there and does not start, for instance for want of memory, is no reason
        // to do without it.
        const bool isThere = ::access(helper.c_str(), X_OK) == 0;
        co_return isThere ? VerificationOutcome::undecided : VerificationOutcome::unavailable;
    }
    const Cancellation cancellation;
    conversation.onCancel([cancellation] { cancellation.cancel(); });
    const std::optional<VerificationOutcome> outcome =
        co_await untilCancelled(cancellation, runVerification(std::move(process), conversation));
    conversation.onCancel(nullptr);
    co_return outcome.value_or(VerificationOutcome::cancelled);
}

VerificationMeans verificationMeans(const std::filesystem::path& helper) {
    const auto process = gobject::GObjectPointer<GSubprocess>::adopt(g_subprocess_new(
        G_SUBPROCESS_FLAGS_STDERR_SILENCE, nullptr, helper.c_str(), "--check", nullptr));
    if (!process || !g_subprocess_wait(process.get(), nullptr, nullptr))
        return VerificationMeans::noHelper;
    if (!g_subprocess_get_if_exited(process.get()))
        return VerificationMeans::noHelper;
    switch (g_subprocess_get_exit_status(process.get())) {
    case EXIT_SUCCESS:
        return VerificationMeans::complete;
    case EXIT_FAILURE:
        return VerificationMeans::noService;
    default:
        return VerificationMeans::noHelper;
    }
}

std::filesystem::path verificationHelperPath() {
    constexpr const char* name = "kelo-verify-user";
    if (const auto program = bundle::programPath(); !program.empty()) {
        const auto folder = program.parent_path();
        std::error_code failure;
        // The first is for a build tree, the second for an installation that was moved.
        for (const auto& path : {folder / name, folder.parent_path() / "libexec" / "kelo" / name}) {
            if (std::filesystem::is_regular_file(path, failure))
                return path;
        }
    }
    return std::filesystem::path(KELO_LIBEXEC_DIRECTORY) / name;
}

} // namespace kelo::authorization
