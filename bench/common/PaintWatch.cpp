#include "common/PaintWatch.h"

#include "testing/screen/Picture.h"

#include <X11/Xlib.h>
#include <X11/extensions/Xdamage.h>
#include <poll.h>

#include <stdexcept>

namespace kelo::bench {

struct PaintWatch::Report {
    XRectangle area;
    Clock::time_point time;

    bool covers(screen::Point pixel) const {
        return pixel.x >= area.x && pixel.x < area.x + area.width && pixel.y >= area.y &&
               pixel.y < area.y + area.height;
    }
};

PaintWatch::PaintWatch() {
    int firstError = 0;
    if (!XDamageQueryExtension(own.display(), &firstEvent, &firstError))
        throw std::runtime_error("The X server has no DAMAGE extension.");
    damage = XDamageCreate(own.display(), own.root(), XDamageReportRawRectangles);
    own.sync();
}

PaintWatch::~PaintWatch() {
    XDamageDestroy(own.display(), damage);
}

std::uint32_t PaintWatch::color(screen::Point pixel) const {
    return screen::colorAt(own, pixel.x, pixel.y);
}

void PaintWatch::forget() const {
    XSync(own.display(), True);
}

std::optional<PaintWatch::Report> PaintWatch::next(Clock::time_point deadline) const {
    while (true) {
        while (XPending(own.display()) > 0) {
            XEvent event{};
            XNextEvent(own.display(), &event);
            if (event.type != firstEvent + XDamageNotify)
                continue;
            const auto& notice = reinterpret_cast<const XDamageNotifyEvent&>(event);
            return Report{notice.area, Clock::now()};
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0)
            return std::nullopt;
        pollfd connection{own.descriptor(), POLLIN, 0};
        poll(&connection, 1, static_cast<int>(left.count()));
    }
}

std::optional<PaintWatch::Clock::time_point>
PaintWatch::awaitChange(screen::Point pixel, std::uint32_t before,
                        Clock::time_point deadline) const {
    while (const auto report = next(deadline)) {
        if (report->covers(pixel) && color(pixel) != before)
            return report->time;
    }
    return std::nullopt;
}

void PaintWatch::awaitQuiet(Clock::duration quiet, Clock::time_point deadline) const {
    while (Clock::now() < deadline && next(Clock::now() + quiet)) {
    }
}

} // namespace kelo::bench
