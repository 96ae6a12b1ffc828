#include "linux/gtk/update/GtkUserDriver.h"

#include "base/Translation.h"
#include "linux/gtk/kit/WindowPresentation.h"
#include "linux/gtk/update/UpdateWindow.h"

#include <glibmm/miscutils.h>
#include <gtkmm/application.h>

#include <algorithm>
#include <utility>

namespace kelo::gtk {

using updater::CheckKind;
using updater::RelaunchChoice;
using updater::UpdateChoice;
using updater::UpdateOffer;

namespace {

std::string sizeText(std::uint64_t bytes) {
    return Glib::format_size(bytes);
}

UpdateContent::Progress asProgress(const updater::DownloadProgress& progress) {
    if (!progress.expected || *progress.expected == 0)
        return {std::nullopt, sizeText(progress.received)};
    const double fraction =
        static_cast<double>(progress.received) / static_cast<double>(*progress.expected);
    return {std::min(fraction, 1.0),
            translated("%1 of %2", {sizeText(progress.received), sizeText(*progress.expected)})};
}

std::string offerSentence(const UpdateOffer& offer) {
    std::string sentence = translated("Version %1 is available. You have version %2.",
                                      {offer.offeredVersion, offer.installedVersion});
    if (offer.informationalOnly)
        sentence += " " + translated("It cannot be installed from here.") +
                    (offer.obstacle.empty() ? "" : " " + offer.obstacle);
    else if (offer.critical)
        sentence += " " + translated("It is important to install it.");
    return sentence;
}

} // namespace

GtkUserDriver::GtkUserDriver(std::function<void(const std::string&)> openLink)
    : openLink(std::move(openLink)) {}

GtkUserDriver::~GtkUserDriver() = default;

void GtkUserDriver::show(UpdateContent content, Attention attention) {
    answerWithFallback();
    isDownloading = false;
    if (!window) {
        window = std::make_unique<UpdateWindow>();
        if (const auto application =
                std::dynamic_pointer_cast<Gtk::Application>(Gio::Application::get_default()))
            application->add_window(*window);
    }
    window->setContent(std::move(content));
    if (attention == Attention::take)
        presentWithActivationToken(*window);
    else
        showWithoutFocus(*window);
}

void GtkUserDriver::answerWithFallback() {
    if (const auto answer = std::exchange(fallbackAnswer, nullptr))
        answer();
}

void GtkUserDriver::finish(bool moreFollows) {
    if (moreFollows)
        window->disableChoices();
    else
        hide();
}

// Not destroyed, because the window may still be inside its own event handling.
void GtkUserDriver::hide() {
    isDownloading = false;
    if (window)
        window->set_visible(false);
}

template <typename Answer>
Task<Answer> GtkUserDriver::ask(UpdateContent content, std::vector<Button<Answer>> answers,
                                Answer fallback, Attention attention) {
    co_return co_await withCheckedContinuation<Answer>(
        [&](CheckedContinuation<Answer> continuation) {
            const auto answer = [this, continuation](Answer given, bool moreFollows) {
                fallbackAnswer = nullptr;
                finish(moreFollows);
                continuation.resume(given);
            };
            for (const auto& button : answers)
                content.choices.push_back(
                    {button.label,
                     [answer, given = button.answer, moreFollows = button.moreFollows] {
                         answer(given, moreFollows);
                     },
                     &button == &answers.back(), button.apart});
            content.dismissed = [answer, fallback] { answer(fallback, false); };
            show(std::move(content), attention);
            fallbackAnswer = [continuation, fallback] { continuation.resume(fallback); };
        });
}

void GtkUserDriver::showChecking(std::function<void()> cancel) {
    UpdateContent content;
    content.heading = translated("Checking for updates…");
    content.progress = UpdateContent::Progress{std::nullopt, ""};
    content.choices = {{translated("Cancel"), cancel, false, false}};
    content.dismissed = cancel;
    show(std::move(content), Attention::take);
}

Task<UpdateChoice> GtkUserDriver::showOffer(UpdateOffer offer, CheckKind kind) {
    UpdateContent content;
    content.heading = translated("A new version of %1 is available", {offer.programName});
    content.sentence = offerSentence(offer);
    content.notes = offer.releaseNotes;
    content.openLink = openLink;
    const std::string install =
        offer.informationalOnly ? translated("Learn More…") : translated("Install Update");
    std::vector<Button<UpdateChoice>> answers;
    if (!offer.critical) {
        answers.push_back({translated("Skip This Version"), UpdateChoice::skipThisVersion, true});
        answers.push_back({translated("Remind Me Later"), UpdateChoice::remindLater});
    }
    answers.push_back({install, UpdateChoice::install, false, !offer.informationalOnly});
    return ask(std::move(content), std::move(answers), UpdateChoice::remindLater,
               kind == CheckKind::userInitiated ? Attention::take : Attention::leave);
}

void GtkUserDriver::showDownload(updater::DownloadProgress progress, std::function<void()> cancel) {
    if (isDownloading && window) {
        window->setProgress(asProgress(progress));
        return;
    }
    UpdateContent content;
    content.heading = translated("Downloading the update…");
    content.progress = asProgress(progress);
    content.choices = {{translated("Cancel"), cancel, false, false}};
    content.dismissed = cancel;
    show(std::move(content), Attention::leave);
    isDownloading = true;
}

void GtkUserDriver::showPreparing() {
    UpdateContent content;
    content.heading = translated("Preparing the update…");
    content.sentence = translated("Its signature is checked before anything is installed.");
    content.progress = UpdateContent::Progress{std::nullopt, ""};
    show(std::move(content), Attention::leave);
}

Task<RelaunchChoice> GtkUserDriver::showReadyToRelaunch(UpdateOffer offer) {
    UpdateContent content;
    content.heading = translated("The update is ready");
    content.sentence = translated("%1 will close, and open again as version %2. If you choose "
                                  "“Later”, its next start is that version.",
                                  {offer.programName, offer.offeredVersion});
    std::vector<Button<RelaunchChoice>> answers;
    answers.push_back({translated("Later"), RelaunchChoice::later});
    answers.push_back(
        {translated("Install and Relaunch"), RelaunchChoice::installAndRelaunch, false, true});
    return ask(std::move(content), std::move(answers), RelaunchChoice::later, Attention::leave);
}

Task<void> GtkUserDriver::tell(std::string heading, std::string sentence) {
    UpdateContent content;
    content.heading = std::move(heading);
    content.sentence = std::move(sentence);
    std::vector<Button<bool>> answers;
    answers.push_back({translated("OK"), true});
    co_await ask(std::move(content), std::move(answers), true, Attention::take);
}

Task<void> GtkUserDriver::showMessage(std::string heading, std::string sentence) {
    return tell(std::move(heading), std::move(sentence));
}

Task<void> GtkUserDriver::showFailure(std::string sentence) {
    return tell(translated("The update did not work"), std::move(sentence));
}

Task<bool> GtkUserDriver::askForAutomaticChecks(std::string programName) {
    UpdateContent content;
    content.heading = translated("Check for updates automatically?");
    content.sentence = translated(
        "%1 can look for new versions by itself. You can always look yourself from its menu.",
        {programName});
    std::vector<Button<bool>> answers;
    answers.push_back({translated("Don’t Check"), false});
    answers.push_back({translated("Check Automatically"), true});
    // This question follows a check that the user started, so the window may take the focus.
    return ask(std::move(content), std::move(answers), false, Attention::take);
}

bool GtkUserDriver::bringToFront() {
    if (!window || !window->get_visible())
        return false;
    window->present();
    return true;
}

void GtkUserDriver::dismiss() {
    answerWithFallback();
    hide();
}

} // namespace kelo::gtk
