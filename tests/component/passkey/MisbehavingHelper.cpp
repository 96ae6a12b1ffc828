#include "linux/authorization/protocol/VerificationProtocol.h"
#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

// Stands in for kelo-verify-user and does what KELO_TEST_BEHAVIOUR says.

using namespace kelo;
using namespace kelo::authorization;

namespace {

void write(const std::vector<char>& bytes) {
    if (!posix::writeAll(STDOUT_FILENO, {bytes.data(), bytes.size()}))
        ::_exit(EXIT_FAILURE);
}

/// Two messages at once, so that the second is there when the first is read.
void sayTwo(std::vector<char> first, const std::vector<char>& second) {
    first.insert(first.end(), second.begin(), second.end());
    write(first);
}

void say(authorization::MessageType type, std::string_view payload = "") {
    write(encode(type, payload));
}

authorization::Message receive() {
    static authorization::MessageReader reader;
    while (true) {
        if (auto message = reader.next())
            return std::move(*message);
        char byte = 0;
        if (::read(STDIN_FILENO, &byte, 1) != 1)
            ::_exit(EXIT_FAILURE);
        reader.feed(std::span(&byte, 1));
    }
}

authorization::RunNonce nonce() {
    authorization::RunNonce read{};
    std::ranges::copy(receive().payload, read.begin());
    return read;
}

void sayVerified() {
    say(authorization::MessageType::result,
        authorization::encodeResult(authorization::HelperResult::verified, nonce()));
}

/// Stays open as long as this process lives.
int lifeline = -1;

[[noreturn]] void hang() {
    while (true)
        ::pause();
}

const std::map<std::string, std::function<void()>> behaviours = {
    {"verified", [] { sayVerified(); }},
    {"unavailable",
     [] {
         say(authorization::MessageType::result,
             authorization::encodeResult(authorization::HelperResult::unavailable, nonce()));
     }},
    {"undecided",
     [] {
         say(authorization::MessageType::result,
             authorization::encodeResult(authorization::HelperResult::undecided, nonce()));
     }},
    {"says nothing", [] {}},
    {"fails", [] { ::_exit(EXIT_FAILURE); }},
    {"dies", [] { ::raise(SIGKILL); }},
    {"verified, then fails",
     [] {
         sayVerified();
         ::_exit(EXIT_FAILURE);
     }},
    {"verified, then dies",
     [] {
         sayVerified();
         ::raise(SIGKILL);
     }},
    {"verified, then goes on",
     [] {
         sayVerified();
         say(authorization::MessageType::information, "And another thing.");
     }},
    {"verified, then half a message",
     [] {
         sayVerified();
         write({'I', 0});
     }},
    {"verified, then control characters",
     [] {
         sayVerified();
         write({'I', 0, 1, '\x1B'});
     }},
    {"verified twice",
     [] {
         const authorization::RunNonce once = nonce();
         say(authorization::MessageType::result,
             authorization::encodeResult(authorization::HelperResult::verified, once));
         say(authorization::MessageType::result,
             authorization::encodeResult(authorization::HelperResult::verified, once));
     }},
    {"verified without being asked",
     [] {
         say(authorization::MessageType::result,
             authorization::encodeResult(authorization::HelperResult::verified,
                                         authorization::RunNonce{}));
     }},
    {"unknown result",
     [] {
         const authorization::RunNonce once = nonce();
         say(authorization::MessageType::result, "*" + std::string(once.begin(), once.end()));
     }},
    {"garbage", [] { write(std::vector<char>(10000, '\x07')); }},
    {"garbage, then hangs",
     [] {
         write(std::vector<char>(10, '\x07'));
         hang();
     }},
    {"control characters, then hangs",
     [] {
         write({'I', 0, 1, '\x1B'});
         hang();
     }},
    {"plain text",
     [] {
         write({'P', 'a', 's', 's', 'w', 'o', 'r', 'd', ':'});
     }},
    {"half a message",
     [] {
         write({'I', 0, 9, 'x'});
     }},
    {"control characters",
     [] {
         write({'I', 0, 1, '\x1B'});
     }},
    {"begins itself",
     [] {
         say(authorization::MessageType::begin, std::string(16, 'x'));
         hang();
     }},
    {"answers itself",
     [] {
         say(authorization::MessageType::answer, "secret");
         hang();
     }},
    {"speaks while a question is open",
     [] {
         const authorization::RunNonce once = nonce();
         sayTwo(encode(authorization::MessageType::hiddenPrompt, "Password: "),
                encode(authorization::MessageType::result,
                       authorization::encodeResult(authorization::HelperResult::verified, once)));
         receive();
     }},
    {"gives the result right after its question",
     [] {
         const RunNonce once = nonce();
         say(MessageType::hiddenPrompt, "Password: ");
         say(MessageType::result, encodeResult(HelperResult::verified, once));
         if (::write(lifeline, "!", 1) != 1)
             ::_exit(EXIT_FAILURE);
         receive();
     }},
    {"two questions at once",
     [] {
         nonce();
         sayTwo(encode(authorization::MessageType::hiddenPrompt, "Password: "),
                encode(authorization::MessageType::hiddenPrompt, "Password: "));
         receive();
         hang();
     }},
    {"dies while a question is open",
     [] {
         nonce();
         say(authorization::MessageType::hiddenPrompt, "Password: ");
         ::raise(SIGKILL);
     }},
    {"asks for a name, then for a password, then for a finger",
     [] {
         const authorization::RunNonce expected = nonce();
         say(MessageType::visiblePrompt, "Name: ");
         receive();
         say(MessageType::tryAgain);
         say(MessageType::hiddenPrompt, "Password: ");
         receive();
         say(MessageType::tryAgain);
         say(MessageType::tryAgain);
         say(MessageType::result, encodeResult(HelperResult::failed, expected));
     }},
    {"stops listening before its question",
     [] {
         nonce();
         ::shutdown(STDIN_FILENO, SHUT_RD);
         say(MessageType::hiddenPrompt, "Password: ");
         hang();
     }},
    {"hangs",
     [] {
         nonce();
         say(authorization::MessageType::information, "Swipe your finger");
         hang();
     }},
};

} // namespace

int main() {
    if (const char* path = std::getenv("KELO_TEST_LIFELINE"))
        lifeline = ::open(path, O_WRONLY);
    const char* name = std::getenv("KELO_TEST_BEHAVIOUR");
    const auto found = behaviours.find(name ? name : "");
    if (found == behaviours.end())
        return 2;
    found->second();
    return EXIT_SUCCESS;
}
