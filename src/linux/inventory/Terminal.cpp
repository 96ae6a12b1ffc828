#include "linux/inventory/Terminal.h"

#include "base/ShownText.h"

#include <termios.h>
#include <unistd.h>

#include <ostream>
#include <utility>

namespace kelo::inventory {

namespace {

/// While it exists, the terminal does not show what is typed.
class HiddenTyping {
public:
    HiddenTyping() : isTerminal(::tcgetattr(STDIN_FILENO, &before) == 0) {
        termios hidden = before;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        if (isTerminal)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    ~HiddenTyping() {
        if (isTerminal)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
    }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;

    const bool& hidesLineBreak() const { return isTerminal; }

private:
    termios before{};
    bool isTerminal;
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
    output << question << std::flush;
    if (echo)
        return readBytes();
    const HiddenTyping hidden;
    auto answer = readBytes();
    if (hidden.hidesLineBreak())
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
