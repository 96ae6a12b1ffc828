#pragma once

#include "linux/authorization/helper/Channel.h"

#include <security/pam_appl.h>

#include <string>

namespace kelo::authorization {

/// How one try ended.
enum class TryOutcome {
    verified,
    wrong,       ///< another try may be right
    refused,     ///< no further try would be: an expired account, too many tries
    unavailable, ///< the modules could not decide
};

/// One try of PAM's to authenticate a user, with its words going through the channel.
class PamSession {
public:
    PamSession(Channel& channel, std::string user);
    ~PamSession();
    PamSession(const PamSession&) = delete;
    PamSession& operator=(const PamSession&) = delete;

    TryOutcome run();

private:
    static int converse(int count, const pam_message** messages, pam_response** responses,
                        void* session);
    /// A PAM result code. The answer is malloc'ed for the module, which frees it, or null.
    int say(const pam_message& message, char*& answer);
    int ask(MessageType type, const char* question, char*& answer);

    Channel& channel;
    std::string user;
    pam_handle_t* handle = nullptr;
    int lastResult = PAM_SUCCESS;
};

} // namespace kelo::authorization
