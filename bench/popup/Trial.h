#pragma once

#include "common/PaintWatch.h"
#include "testing/screen/Keyboard.h"
#include "testing/screen/WindowEvents.h"
#include "testing/screen/Windows.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kelo::bench {

/// The measured times, in milliseconds.
enum class Moment { tapToMapped, tapToPainted, holdToMapped, tapToUnmapped };
inline constexpr std::size_t momentCount = 4;
using Times = std::array<std::vector<double>, momentCount>;

/// Presses the chord and times a program that shows and hides a window by it. A time begins just
/// before the key is sent to the server (for a hold: 250 ms later). It ends when the server's event
/// about the window, or about what is drawn in it, arrives.
class Trial {
public:
    /// The window must not be on the screen yet. It is recognized by its minimum size. The pixel is
    /// one that the window will cover.
    Trial(int leastWidth, int leastHeight, screen::Point pixel);
    ~Trial();

    /// Times the first show; the window is known from then on, and on the screen.
    double firstShow();
    /// After a first show, with the window on the screen or not: shows and hides it by taps and
    /// holds.
    Times repeat(int repetitions);
    /// Hides it by a tap, if it is on the screen.
    void putAway();

private:
    using Clock = screen::WindowEvents::Clock;

    Clock::time_point awaitEvent(screen::WindowEvent::Kind kind) const;
    void settle() const;
    void pressChord() const;
    /// When the release was sent.
    Clock::time_point releaseChord() const;
    Clock::time_point tap() const;
    void timeTap(Times& times) const;
    void timeHold(Times& times) const;
    double timeHide() const;

    int leastWidth;
    int leastHeight;
    screen::Point pixel;
    screen::WindowEvents events;
    screen::Windows windows{events.connection()};
    PaintWatch paint;
    screen::XConnection hands;
    screen::Keyboard keyboard{hands};
    std::optional<screen::WindowId> window;
};

} // namespace kelo::bench
