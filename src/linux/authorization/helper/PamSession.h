#pragma once

#include "linux/authorization/helper/Channel.h"
#include "linux/authorization/helper/PamService.h"

#include <security/pam_appl.h>

#include <string>

namespace kelo::authorization {

/// The result of one try.
enum class TryOutcome {
    verified,
    wrong,     ///< another try may succeed
    refused,   ///< no further try can succeed: an expired account, too many tries
    undecided, ///< PAM or one of its modules could not decide
};

/// One try to authenticate a user with PAM. PAM's messages and questions go through the channel,
/// which must outlive this, as the service must.
class PamSession {
public:
    PamSession(Channel& channel, const PamService& service, std::string user);
    ~PamSession();
    PamSession(const PamSession&) = delete;
    PamSession& operator=(const PamSession&) = delete;

    TryOutcome run();

private:
    static int converse(int count, const pam_message** messages, pam_response** responses,
                        void* session);
    /// Both return a PAM result code. The module frees the answer, which is allocated with malloc()
    /// or null.
    int say(const pam_message& message, char*& answer);
    int ask(MessageType type, const char* question, char*& answer);

    Channel& channel;
    const PamService& service;
    std::string user;
    pam_handle_t* handle = nullptr;
    int lastResult = PAM_SUCCESS;
};

} // namespace kelo::authorization
