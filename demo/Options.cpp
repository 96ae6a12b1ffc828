#include "demo/Options.h"

#include <charconv>
#include <string_view>

namespace kelo::demo {
namespace {

std::uint16_t parsePort(std::string_view text) {
    std::uint16_t port = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), port);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size())
        throw UsageError("--port takes a number from 0 to 65535, not \"" + std::string(text) +
                         "\".");
    return port;
}

std::string parseOrigin(std::string_view text) {
    const bool secure = text.starts_with("https://") && text.size() > 8;
    if (!secure || text.find_first_of("/?#@ ", 8) != std::string_view::npos)
        throw UsageError("--origin takes https://host or https://host:port, not \"" +
                         std::string(text) + "\".");
    return std::string(text);
}

} // namespace

Options parseOptions(std::span<const char* const> arguments) {
    Options options;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string_view name = arguments[index];
        const auto value = [&] {
            if (++index == arguments.size() || *arguments[index] == '\0')
                throw UsageError(std::string(name) + " needs a value.");
            return std::string(arguments[index]);
        };
        if (name == "--help" || name == "-h")
            options.action = Options::Action::help;
        else if (name == "--init")
            options.action = Options::Action::makeAuthority;
        else if (name == "--authority")
            options.authority = value();
        else if (name == "--port")
            options.port = parsePort(value());
        else if (name == "--state")
            options.state = value();
        else if (name == "--times")
            options.times = value();
        else if (name == "--record")
            options.record = value();
        else if (name == "--origin")
            options.origin = parseOrigin(value());
        else if (name == "--stranger")
            options.stranger = true;
        else if (name == "--gallery")
            options.gallery = value();
        else
            throw UsageError("There is no option \"" + std::string(name) + "\".");
        if (options.action == Options::Action::help)
            return options;
    }
    if (options.authority.empty())
        throw UsageError("--authority is missing.");
    return options;
}

std::string helpText() {
    return "Usage:\n"
           "  kelo-demo-service --init --authority DIRECTORY\n"
           "  kelo-demo-service --authority DIRECTORY [--port PORT] [--state FILE] [--origin URL]\n"
           "                    [--stranger] [--gallery DIRECTORY] [--record FILE]\n"
           "                    [--times FILE]\n"
           "\n"
           "A complete assistant service for one computer: it answers on the loopback\n"
           "addresses only, over HTTPS, with passkeys.\n"
           "\n"
           "  --init       make a private certificate authority and a server certificate,\n"
           "               or renew what is about to end, and stop\n"
           "  --authority  where the certificates are kept\n"
           "  --port       port to listen on; 0 for any free one (default: 8443)\n"
           "  --state      keep passkeys and sessions in this file across restarts\n"
           "  --origin     origin to expect in passkeys (default: the one it listens on)\n"
           "  --stranger   put a frame of a foreign origin into the widget page, which tries\n"
           "               to get at the microphone and to close the panel\n"
           "  --gallery    serve the pages of this folder below /gallery/\n"
           "  --record     write the passkey ceremonies that it has accepted into this file,\n"
           "               for other verifiers\n"
           "  --times      write when each request came and when its answer began, in\n"
           "               nanoseconds of the monotonic clock, into this file\n"
           "  --help       this text\n"
           "\n"
           "Accounts:\n"
           "  ada@example.org    password \"analytical engine\"\n"
           "  grace@example.org  password \"nanosecond\"\n";
}

} // namespace kelo::demo
