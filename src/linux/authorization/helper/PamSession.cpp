#include "linux/authorization/helper/PamSession.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

namespace kelo::authorization {

namespace {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

TryOutcome outcomeOf(int result) {
    switch (result) {
    case PAM_SUCCESS:
        return TryOutcome::verified;
    case PAM_AUTH_ERR:
    case PAM_USER_UNKNOWN:
    case PAM_PERM_DENIED:
    case PAM_CRED_INSUFFICIENT:
        return TryOutcome::wrong;
    case PAM_MAXTRIES:
    case PAM_ACCT_EXPIRED:
    case PAM_NEW_AUTHTOK_REQD:
        return TryOutcome::refused;
    default:
        return TryOutcome::undecided;
    }
}

/// Some modules send a null text.
const char* textOf(const pam_message& message) {
    return message.msg ? message.msg : "";
}

} // namespace

PamSession::PamSession(Channel& channel, const PamService& service, std::string user)
    : channel(channel), service(service), user(std::move(user)) {}

PamSession::~PamSession() {
    if (handle)
        pam_end(handle, lastResult);
}

TryOutcome PamSession::run() {
    const pam_conv conversation{&PamSession::converse, this};
    lastResult = service.start(user, conversation, handle);
    if (lastResult != PAM_SUCCESS)
        return TryOutcome::undecided;
    // Without a password, a successful log-in proves nothing about the person.
    lastResult = pam_authenticate(handle, PAM_DISALLOW_NULL_AUTHTOK);
    if (lastResult != PAM_SUCCESS)
        return outcomeOf(lastResult);
    lastResult = pam_acct_mgmt(handle, PAM_DISALLOW_NULL_AUTHTOK);
    // The answer was right, but the account may not log in. Another try would not help.
    const TryOutcome account = outcomeOf(lastResult);
    return account == TryOutcome::wrong ? TryOutcome::refused : account;
}

int PamSession::converse(int count, const pam_message** messages, pam_response** responses,
                         void* session) {
    if (count <= 0 || count > PAM_MAX_NUM_MSG)
        return PAM_CONV_ERR;
    std::unique_ptr<pam_response, FreeDeleter> answers(static_cast<pam_response*>(
        std::calloc(static_cast<std::size_t>(count), sizeof(pam_response))));
    if (!answers)
        return PAM_BUF_ERR;
    for (int index = 0; index < count; ++index) {
        const int result =
            static_cast<PamSession*>(session)->say(*messages[index], answers.get()[index].resp);
        if (result == PAM_SUCCESS)
            continue;
        for (int given = 0; given < index; ++given) {
            if (char* answer = answers.get()[given].resp) {
                wipe(answer, std::strlen(answer));
                std::free(answer);
            }
        }
        return result;
    }
    *responses = answers.release();
    return PAM_SUCCESS;
}

int PamSession::say(const pam_message& message, char*& answer) {
    switch (message.msg_style) {
    case PAM_PROMPT_ECHO_OFF:
        return ask(MessageType::hiddenPrompt, textOf(message), answer);
    case PAM_PROMPT_ECHO_ON:
        return ask(MessageType::visiblePrompt, textOf(message), answer);
    case PAM_TEXT_INFO:
        return channel.send(MessageType::information, presentable(textOf(message))) ? PAM_SUCCESS
                                                                                    : PAM_CONV_ERR;
    case PAM_ERROR_MSG:
        return channel.send(MessageType::error, presentable(textOf(message))) ? PAM_SUCCESS
                                                                              : PAM_CONV_ERR;
    default:
        return PAM_CONV_ERR;
    }
}

int PamSession::ask(MessageType type, const char* question, char*& answer) {
    if (!channel.send(type, presentable(question)))
        return PAM_CONV_ERR;
    std::optional<Message> reply = channel.receive();
    if (!reply || reply->type != MessageType::answer)
        return PAM_CONV_ERR;
    answer = ::strdup(reply->payload.c_str());
    wipe(reply->payload);
    return answer ? PAM_SUCCESS : PAM_BUF_ERR;
}

} // namespace kelo::authorization
