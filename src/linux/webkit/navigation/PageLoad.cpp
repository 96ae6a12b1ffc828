#include "linux/webkit/navigation/PageLoad.h"

#include <string_view>
#include <utility>

namespace kelo::webkit {

PageLoad::PageLoad(std::function<void()> timedOut) : timedOut(std::move(timedOut)) {}

PageLoad::~PageLoad() {
    stopTimer();
}

void PageLoad::requestPage(const platform::UrlRequest& request) {
    errorPageRequested = false;
    limit = request.timeout;
    // Before its first document, a process may only be slow to start.
    unanswered = processHasShownADocument ? std::optional(request) : std::nullopt;
    startTimer();
}

void PageLoad::requestErrorPage(std::string address) {
    stage = Stage::failed;
    failedAddress = std::move(address);
    errorPageRequested = true;
    unanswered.reset();
    stopTimer();
}

void PageLoad::started() {
    // The request was granted without a load: it led to another place in the shown page.
    if (!timer && !isPaused)
        unanswered.reset();
    stage = std::exchange(errorPageRequested, false) ? Stage::errorPage : Stage::page;
    if (stage == Stage::page)
        startTimer();
}

void PageLoad::requested(const char* method) {
    sentForm = method && std::string_view(method) != "GET";
}

void PageLoad::progressed() {
    if (timer)
        startTimer();
}

void PageLoad::committed() {
    processHasShownADocument = true;
    unanswered.reset();
    certificateAllowances = 0;
    repetitions = 0;
    progressed();
}

void PageLoad::documentCompleted() {
    stopTimer();
}

bool PageLoad::finished() {
    stopTimer();
    return stage == Stage::page;
}

void PageLoad::failed() {
    stage = Stage::failed;
    stopTimer();
}

void PageLoad::processEnded() {
    failed();
    processHasShownADocument = false;
}

std::string PageLoad::addressToTryAgain() const {
    return stage == Stage::errorPage ? failedAddress : std::string();
}

void PageLoad::pause() {
    const bool isWaiting = timer != nullptr;
    stopTimer();
    isPaused = isWaiting;
}

void PageLoad::goOn() {
    if (isPaused)
        startTimer();
}

std::optional<platform::UrlRequest> PageLoad::takeUnanswered() {
    return std::exchange(unanswered, std::nullopt);
}

bool PageLoad::repeatLost() {
    constexpr int mostRepetitions = 3;
    if (repetitions == mostRepetitions)
        return false;
    ++repetitions;
    certificateAllowances = 0;
    return true;
}

bool PageLoad::allowCertificate() {
    // The network process may see the repeated load before it hears that the certificate is
    // allowed: the one comes from the web process, the other from ours.
    constexpr int mostAllowances = 3;
    if (certificateAllowances == mostAllowances)
        return false;
    ++certificateAllowances;
    return true;
}

void PageLoad::startTimer() {
    stopTimer();
    timer = MainLoop::main().scheduleTimer(limit, [this] {
        failed();
        timedOut();
    });
}

void PageLoad::stopTimer() {
    isPaused = false;
    if (const auto pending = std::exchange(timer, nullptr))
        pending->invalidate();
}

} // namespace kelo::webkit
