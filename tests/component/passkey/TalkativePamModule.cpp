#include <security/pam_ext.h>
#include <security/pam_modules.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

// A PAM module with the habits of real ones. Its argument says which: "sealed" tells how the
// process protects itself, "prints" writes to standard output, "finger" waits without asking
// anything, until it is ended.

extern "C" {

PAM_EXTERN int pam_sm_authenticate(pam_handle_t* handle, int, int count, const char** arguments) {
    const char* habit = count > 0 ? arguments[0] : "";
    if (std::strcmp(habit, "sealed") == 0) {
        rlimit core{1, 1};
        ::getrlimit(RLIMIT_CORE, &core);
        int signal = 0;
        ::prctl(PR_GET_PDEATHSIG, &signal);
        pam_info(handle, "dumpable %d, core %d, parent's end %d", ::prctl(PR_GET_DUMPABLE),
                 static_cast<int>(core.rlim_max), signal);
    } else if (std::strcmp(habit, "prints") == 0) {
        std::puts("Look what I print.");
        std::fflush(stdout);
        pam_error(handle, "Careful\x1B!");
    } else if (std::strcmp(habit, "finger") == 0) {
        pam_info(handle, "Swipe your finger");
        while (true)
            ::pause();
    }
    return PAM_SUCCESS;
}

PAM_EXTERN int pam_sm_setcred(pam_handle_t*, int, int, const char**) {
    return PAM_SUCCESS;
}

PAM_EXTERN int pam_sm_acct_mgmt(pam_handle_t*, int, int, const char**) {
    return PAM_SUCCESS;
}
}
