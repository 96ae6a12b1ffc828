#include "linux/inventory/Terminal.h"

#include "base/ShownText.h"

#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <ostream>
#include <utility>

namespace kelo::inventory {

namespace {

/// While it exists, the terminal does not show what is typed. A signal that ends the program
/// meanwhile, as Control and C do, leaves the terminal as it was.
class HiddenTyping {
public:
    HiddenTyping() : isTerminal(::tcgetattr(STDIN_FILENO, &usual()) == 0) {
        if (!isTerminal)
            return;
        for (std::size_t at = 0; at < ending.size(); ++at)
            former[at] = std::signal(ending[at], showAndEnd);
        termios hidden = usual();
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    ~HiddenTyping() {
        if (!isTerminal)
            return;
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &usual());
        for (std::size_t at = 0; at < ending.size(); ++at)
            std::signal(ending[at], former[at]);
    }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;

    /// Whether the line break that ends the answer is not seen, either.
    bool hidesLineBreak() const { return isTerminal; }

private:
    static constexpr std::array ending{SIGHUP, SIGINT, SIGQUIT, SIGTERM};

    /// Where a signal handler finds it.
    static termios& usual() {
        static termios settings{};
        return settings;
    }
    static void showAndEnd(int signal) {
        ::tcsetattr(STDIN_FILENO, TCSANOW, &usual());
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }

    bool isTerminal;
    std::array<void (*)(int), ending.size()> former{};
};

/// Read byte by byte, so that nothing of it stays in a buffer of a library.
std::optional<SecretText> readBytes() {
    constexpr std::size_t longest = 1024;
    std::string line;
    line.reserve(longest);
    char byte = 0;
    bool hasEnded = true;
    while (line.size() < longest && ::read(STDIN_FILENO, &byte, 1) == 1) {
        hasEnded = false;
        if (byte == '\n')
            break;
        line += byte;
    }
    SecretText answer(line);
    wipe(line);
    return hasEnded ? std::nullopt : std::optional(std::move(answer));
}

} // namespace

std::optional<SecretText> Terminal::readLine(const std::string& question, bool echo) {
    std::optional<HiddenTyping> hidden;
    if (!echo)
        hidden.emplace();
    output << question << std::flush;
    auto answer = readBytes();
    if (hidden && hidden->hidesLineBreak())
        output << std::endl;
    return answer;
}

Task<std::optional<SecretText>> Terminal::ask(authenticator::VerificationPrompt prompt) {
    co_return readLine(shownName(prompt.text) + " ", prompt.echo);
}

void Terminal::showInformation(std::string text) {
    output << shownName(text) << std::endl;
}

void Terminal::showError(std::string text) {
    output << shownName(text) << std::endl;
}

} // namespace kelo::inventory
