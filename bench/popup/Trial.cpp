#include "popup/Trial.h"

#include <stdexcept>
#include <thread>

namespace kelo::bench {

namespace {

using screen::WindowEvent;

constexpr std::chrono::seconds patience{30};
/// How long a quick hand has the chord down.
constexpr std::chrono::milliseconds tapLength{40};
constexpr std::chrono::milliseconds holdThreshold{250};
/// When nothing has been drawn for that long, what a show or a hide set going is over.
constexpr std::chrono::milliseconds quiet{120};
constexpr std::chrono::seconds longestUnrest{2};

const screen::KeySymbol control = screen::keySymbol("Control_L");
const screen::KeySymbol option = screen::keySymbol("Alt_L");

double milliseconds(std::chrono::steady_clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

std::vector<double>& of(Times& times, Moment moment) {
    return times[static_cast<std::size_t>(moment)];
}

} // namespace

Trial::Trial(int leastWidth, int leastHeight, screen::Point pixel)
    : leastWidth(leastWidth), leastHeight(leastHeight), pixel(pixel) {}

Trial::~Trial() {
    releaseChord();
}

Trial::Clock::time_point Trial::awaitEvent(WindowEvent::Kind kind) const {
    const auto found = events.await(
        [&](const WindowEvent& event) {
            if (event.kind != kind)
                return false;
            if (window)
                return event.window == *window;
            const auto seen = windows.describe(event.window);
            return seen.overridesRedirect && seen.width >= leastWidth && seen.height >= leastHeight;
        },
        Clock::now() + patience);
    if (!found)
        throw std::runtime_error("Nothing came of the chord.");
    return found->time;
}

void Trial::settle() const {
    paint.awaitQuiet(quiet, Clock::now() + longestUnrest);
    paint.forget();
    events.forget();
}

void Trial::pressChord() const {
    keyboard.down(control);
    keyboard.down(option);
}

Trial::Clock::time_point Trial::releaseChord() const {
    const auto sent = Clock::now();
    keyboard.up(option);
    keyboard.up(control);
    return sent;
}

Trial::Clock::time_point Trial::tap() const {
    pressChord();
    std::this_thread::sleep_for(tapLength);
    return releaseChord();
}

double Trial::firstShow() {
    settle();
    const auto sent = tap();
    std::optional<WindowEvent> found;
    const auto deadline = Clock::now() + patience;
    while (!window) {
        found = events.next(deadline);
        if (!found)
            throw std::runtime_error("Nothing came of the chord.");
        if (found->kind != WindowEvent::Kind::mapped)
            continue;
        const auto seen = windows.describe(found->window);
        if (seen.overridesRedirect && seen.width >= leastWidth && seen.height >= leastHeight)
            window = seen.identifier;
    }
    return milliseconds(found->time - sent);
}

void Trial::timeTap(Times& times) const {
    const auto before = paint.color(pixel);
    const auto sent = tap();
    const auto mapped = awaitEvent(WindowEvent::Kind::mapped);
    const auto painted = paint.awaitChange(pixel, before, Clock::now() + patience);
    if (!painted)
        throw std::runtime_error("The window was not painted.");
    of(times, Moment::tapToMapped).push_back(milliseconds(mapped - sent));
    of(times, Moment::tapToPainted).push_back(milliseconds(*painted - sent));
}

void Trial::timeHold(Times& times) const {
    keyboard.down(control);
    const auto sent = Clock::now();
    keyboard.down(option);
    const auto mapped = awaitEvent(WindowEvent::Kind::mapped);
    releaseChord();
    of(times, Moment::holdToMapped).push_back(milliseconds(mapped - sent - holdThreshold));
}

double Trial::timeHide() const {
    const auto sent = tap();
    return milliseconds(awaitEvent(WindowEvent::Kind::unmapped) - sent);
}

Times Trial::repeat(int repetitions) {
    putAway();
    Times times;
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        timeTap(times);
        settle();
        of(times, Moment::tapToUnmapped).push_back(timeHide());
        settle();
        timeHold(times);
        settle();
        putAway();
    }
    return times;
}

void Trial::putAway() {
    settle();
    if (window && windows.describe(*window).isMapped)
        timeHide();
    settle();
}

} // namespace kelo::bench
