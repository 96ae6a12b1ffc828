#include <security/pam_appl.h>
#include <security/pam_ext.h>
#include <security/pam_modules.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

// A PAM module with the habits of real ones. Its argument says which: "sealed" tells how the
// process protects itself, "prints" writes to standard output, "finger" waits without asking
// anything, until it is ended, "reads" looks for more on standard input, "asks" asks for something
// that may be seen and something that may not, "silent" says nothing in four ways, "flags" tells
// what it was told to do, "overdoes" holds conversations that no module may hold. "result=N" is
// what it comes to in the end, when it is named for authentication or for the account.

namespace {

int resultIn(int count, const char** arguments) {
    for (int i = 0; i < count; ++i)
        if (std::strncmp(arguments[i], "result=", 7) == 0)
            return std::atoi(arguments[i] + 7);
    return PAM_SUCCESS;
}

void wait() {
    while (true)
        ::pause();
}

void tellTheSeal(pam_handle_t* handle) {
    rlimit core{1, 1};
    ::getrlimit(RLIMIT_CORE, &core);
    int signal = 0;
    ::prctl(PR_GET_PDEATHSIG, &signal);
    pam_info(handle, "dumpable %d, core %d, parent's end %d", ::prctl(PR_GET_DUMPABLE),
             static_cast<int>(core.rlim_max), signal);
}

int askTwice(pam_handle_t* handle) {
    char* name = nullptr;
    char* code = nullptr;
    pam_prompt(handle, PAM_PROMPT_ECHO_ON, &name, "Name\x1B: ");
    pam_prompt(handle, PAM_PROMPT_ECHO_OFF, &code, "Code\x1B: ");
    const bool right =
        name && code && std::strcmp(name, "zoe") == 0 && std::strcmp(code, "1234") == 0;
    std::free(name);
    std::free(code);
    return right ? PAM_SUCCESS : PAM_AUTH_ERR;
}

int converse(pam_handle_t* handle, int count, const pam_message** messages) {
    const void* item = nullptr;
    pam_get_item(handle, PAM_CONV, &item);
    const auto* conversation = static_cast<const pam_conv*>(item);
    pam_response* responses = nullptr;
    const int result = conversation->conv(count, messages, &responses, conversation->appdata_ptr);
    if (responses)
        for (int i = 0; i < count; ++i)
            std::free(responses[i].resp);
    std::free(responses);
    return result;
}

void sayNothing(pam_handle_t* handle) {
    for (const int style :
         {PAM_TEXT_INFO, PAM_ERROR_MSG, PAM_PROMPT_ECHO_ON, PAM_PROMPT_ECHO_OFF}) {
        const pam_message message{style, nullptr};
        const pam_message* messages[] = {&message};
        converse(handle, 1, messages);
    }
}

void overdo(pam_handle_t* handle) {
    const pam_message text{PAM_TEXT_INFO, "text"};
    const pam_message unknown{99, "unknown"};
    const pam_message* texts[PAM_MAX_NUM_MSG + 1];
    for (const pam_message*& message : texts)
        message = &text;
    const pam_message* unknowns[] = {&unknown};
    const bool refused = converse(handle, 0, texts) == PAM_CONV_ERR &&
                         converse(handle, -1, texts) == PAM_CONV_ERR &&
                         converse(handle, PAM_MAX_NUM_MSG + 1, texts) == PAM_CONV_ERR &&
                         converse(handle, 1, unknowns) == PAM_CONV_ERR;
    pam_info(handle, refused ? "all refused" : "not refused");
}

int behave(pam_handle_t* handle, int flags, int count, const char** arguments) {
    const char* habit = count > 0 ? arguments[0] : "";
    if (std::strcmp(habit, "sealed") == 0) {
        tellTheSeal(handle);
    } else if (std::strcmp(habit, "prints") == 0) {
        std::puts("Look what I print.");
        std::fflush(stdout);
        pam_error(handle, "Careful\x1B!");
    } else if (std::strcmp(habit, "reads") == 0) {
        pam_info(handle, "standard input %s", std::getchar() == EOF ? "is empty" : "has something");
    } else if (std::strcmp(habit, "finger") == 0) {
        pam_info(handle, "Swipe your finger");
        wait();
    } else if (std::strcmp(habit, "asks") == 0) {
        return askTwice(handle);
    } else if (std::strcmp(habit, "silent") == 0) {
        sayNothing(handle);
    } else if (std::strcmp(habit, "flags") == 0) {
        pam_info(handle, "empty passwords %s",
                 (flags & PAM_DISALLOW_NULL_AUTHTOK) != 0 ? "refused" : "accepted");
    } else if (std::strcmp(habit, "overdoes") == 0) {
        overdo(handle);
    }
    return resultIn(count, arguments);
}

} // namespace

extern "C" {

PAM_EXTERN int pam_sm_authenticate(pam_handle_t* handle, int flags, int count,
                                   const char** arguments) {
    return behave(handle, flags, count, arguments);
}

PAM_EXTERN int pam_sm_setcred(pam_handle_t*, int, int, const char**) {
    return PAM_SUCCESS;
}

PAM_EXTERN int pam_sm_acct_mgmt(pam_handle_t* handle, int flags, int count,
                                const char** arguments) {
    return behave(handle, flags, count, arguments);
}
}
