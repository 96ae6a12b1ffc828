#include "windows/SignIn.h"

#include "common/KeloWindow.h"
#include "common/PaintWatch.h"
#include "common/RunningKelo.h"
#include "testing/screen/Keyboard.h"

#include <stdexcept>

namespace kelo::bench {

namespace {

using Clock = PaintWatch::Clock;

constexpr std::chrono::seconds patience{30};
constexpr std::chrono::milliseconds quiet{250};
constexpr std::chrono::seconds longestUnrest{4};
constexpr std::chrono::milliseconds oneLook{1};
/// The page after it has the service's mark in this color, but no button.
constexpr std::size_t leastButtonPixels = 4000;

// One of the accounts that the demo service begins with.
constexpr const char* email = "ada@example.org";
constexpr const char* password = "analytical engine";

} // namespace

SignInTimes timeSignIn(const std::filesystem::path& build, const std::filesystem::path& folder) {
    const MomentFile moments(folder / "moments");
    const RunningKelo kelo(build, folder, {}, moments.variables());
    const KeloWindow window(kelo.identifier());
    const WindowWatch watch;
    const PaintWatch paint;
    const screen::XConnection hands;
    const screen::Keyboard keyboard(hands);
    const auto settle = [&] { paint.awaitQuiet(quiet, Clock::now() + longestUnrest); };

    // The page has put the caret into its first field.
    keyboard.type(email);
    keyboard.press(screen::keySymbol("Tab"));
    keyboard.type(password);
    hands.flush();
    settle();
    paint.forget();
    // The engine shows the old page until it has painted the new one, which has no such button.
    const screen::Point button{window.accented().x, window.accented().y};
    const auto begun = Clock::now();
    keyboard.press(screen::keySymbol("Return"));
    const auto painted = paint.awaitChange(button, accentColor, begun + patience);
    settle();
    const auto lines = moments.read();
    const auto committed = firstMoment(lines, "loadCommitted", begun);
    if (!painted || !committed ||
        watch.awaitArea(accentColor, leastButtonPixels, Clock::now() + oneLook))
        throw std::runtime_error("The sign-in did not lead past the login page.");
    return {*committed - begun, *painted - begun, framesSince(lines, begun)};
}

} // namespace kelo::bench
