#include "linux/webkit/navigation/Retries.h"

#include <array>
#include <utility>

namespace kelo::webkit {

namespace {

using std::chrono::seconds;

// A service that is started anew is back soon. One that is not should not be asked for ever.
constexpr std::array waitingTimes{seconds{5}, seconds{15}, seconds{60}};

} // namespace

Retries::Retries(WebKitWebView* view, std::function<void()> tryAgain)
    : tryAgain(std::move(tryAgain)),
      networkConnection(gobject::connectSignal(
          g_network_monitor_get_default(), "network-changed",
          +[](GNetworkMonitor*, gboolean isThere, Retries* self) {
              if (isThere)
                  self->retry();
          },
          this)),
      mapConnection(gobject::connectSignal(
          view, "map", +[](GtkWidget*, Retries* self) { self->retry(); }, this)) {}

Retries::~Retries() {
    stopTimer();
}

std::optional<seconds> Retries::noticeShown() {
    isWaiting = true;
    stopTimer();
    if (waits == waitingTimes.size())
        return std::nullopt;
    const seconds wait = waitingTimes.at(waits);
    timer = MainLoop::main().scheduleTimer(wait, [this] {
        ++waits;
        retry();
    });
    return wait;
}

void Retries::loadStarted() {
    isWaiting = false;
    stopTimer();
}

void Retries::pageArrived() {
    waits = 0;
}

void Retries::retry() {
    if (std::exchange(isWaiting, false))
        tryAgain();
}

void Retries::stopTimer() {
    if (const auto pending = std::exchange(timer, nullptr))
        pending->invalidate();
}

} // namespace kelo::webkit
