#include "linux/authorization/helper/Channel.h"
#include "linux/authorization/helper/PamService.h"
#include "linux/authorization/helper/PamSession.h"

#include <pwd.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

// kelo-verify-user verifies that the person at the computer is the user this process runs as. PAM
// runs in a separate process because its modules block, load third-party code, and can only be
// stopped by ending the process.

namespace kelo::authorization {

namespace {

constexpr int tries = 3;

/// Passwords pass through this process: no core file, no debugger, and no running on after Kelo.
void sealProcess() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::prctl(PR_SET_DUMPABLE, 0);
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGPIPE, SIG_IGN);
}

std::string currentUser() {
    std::array<char, 16384> memory;
    passwd entry{};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &entry, memory.data(), memory.size(), &found);
    return found ? found->pw_name : "";
}

/// The cause, for the journal of Kelo. It must not name what the user has typed.
void report(const char* cause) {
    std::cerr << "kelo-verify-user: " << cause << std::endl;
}

HelperResult verify(Channel& channel) {
    const std::optional<PamService> service = PamService::find();
    if (!service) {
        report("there is no PAM service \"kelo\"");
        return HelperResult::unavailable;
    }
    const std::string user = currentUser();
    // A directory server that does not answer has the same effect as a user without an entry.
    if (user.empty()) {
        report("the user of this process has no entry among the users");
        return HelperResult::undecided;
    }
    for (int left = tries; left > 0; --left) {
        switch (PamSession(channel, *service, user).run()) {
        case TryOutcome::verified:
            return HelperResult::verified;
        case TryOutcome::refused:
            return HelperResult::failed;
        case TryOutcome::undecided:
            report(
                "PAM could not decide. Its service file cannot be read, or the journal says why");
            return HelperResult::undecided;
        case TryOutcome::wrong:
            break;
        }
        if (left > 1)
            channel.send(MessageType::tryAgain, "");
    }
    return HelperResult::failed;
}

int run() {
    sealProcess();
    Channel channel;
    const std::optional<Message> begin = channel.receive();
    if (!begin || begin->type != MessageType::begin)
        return EXIT_FAILURE;
    RunNonce nonce;
    std::ranges::copy(begin->payload, nonce.begin());
    channel.endProcessWhenClosed();
    const HelperResult result = verify(channel);
    return channel.send(MessageType::result, encodeResult(result, nonce)) ? EXIT_SUCCESS
                                                                          : EXIT_FAILURE;
}

/// Ends as a verification could begin, without one.
int check() {
    return PamService::find() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

} // namespace kelo::authorization

/// With --check: whether there is a PAM service for Kelo. Otherwise a verification, as the protocol
/// has it.
int main(int count, char** words) {
    const bool onlyChecks = count == 2 && std::string_view(words[1]) == "--check";
    return onlyChecks ? kelo::authorization::check() : kelo::authorization::run();
}
