#include "updater/UpdateCheck.h"

#include "base/Translation.h"
#include "updater/UpdateTexts.h"
#include "updater/archive/Download.h"
#include "updater/archive/SignedFeed.h"
#include "updater/error/UpdateError.h"
#include "updater/notes/NotesReader.h"

#include <algorithm>
#include <utility>

namespace kelo::updater {

namespace {

/// An offer that was open this long is looked at again before it is taken.
constexpr std::chrono::hours longestOffer{24};

/// A release can have several archives, one item each, and the selection takes the first of equal
/// versions. So items that can be installed here go first.
void putInstallableFirst(Appcast& appcast, const UpdateInstaller& installer) {
    std::stable_partition(appcast.items.begin(), appcast.items.end(), [&](const AppcastItem& item) {
        return item.enclosure && installer.kind(item) != InstallKind::informationalOnly;
    });
}

} // namespace

UpdateCheck::UpdateCheck(UpdaterContext& context, CheckKind kind)
    : context(context), kind(kind), visible(kind == CheckKind::userInitiated) {}

Task<void> UpdateCheck::run() {
    std::exception_ptr failure;
    try {
        co_await checkAndInstall();
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure)
        co_await report(failure);
    if (context.driver)
        driver().dismiss();
}

void UpdateCheck::bringToUser() {
    kind = CheckKind::userInitiated;
    if (!std::exchange(visible, true))
        showStage();
    driver().bringToFront();
}

void UpdateCheck::enter(Stage next) {
    stage = next;
    if (visible)
        showStage();
}

void UpdateCheck::showStage() {
    if (stage == Stage::checking)
        driver().showChecking(canceller());
    else if (stage == Stage::downloading)
        driver().showDownload(progress, canceller());
    else if (stage == Stage::preparing)
        driver().showPreparing();
}

std::function<void()> UpdateCheck::canceller() const {
    return [cancellation = cancellation] { cancellation.cancel(); };
}

template <typename T>
Task<T> UpdateCheck::unlessCancelled(Task<T> task) {
    std::optional<T> result = co_await untilCancelled(cancellation, std::move(task));
    if (!result)
        throw UpdateError(UpdateErrorKind::cancelled, translated("The update was cancelled."));
    co_return std::move(*result);
}

Task<void> UpdateCheck::checkAndInstall() {
    enter(Stage::checking);
    Selection selection = co_await lookForUpdate();
    if (selection.update)
        co_await offer(std::move(*selection.update));
    else
        co_await showNothingNew(std::move(selection));
}

Task<Selection> UpdateCheck::lookForUpdate() {
    const Appcast appcast = co_await readFeed();
    auto& count = context.state.checkCount;
    if (!std::exchange(looked, true))
        count = std::max(count, count + 1);
    context.state.lastCheck = context.now();
    co_await context.saveState();
    co_return selectUpdate(appcast, rules());
}

Task<Appcast> UpdateCheck::readFeed() {
    const Bytes bytes =
        co_await unlessCancelled(context.transport.fetch(*context.settings.feed, appcastLimit));
    const UpdaterSettings& settings = context.settings;
    Appcast appcast = parseAppcast(
        settings.requiresSignedFeed ? verifiedPart(bytes, settings.publicKey) : ByteView(bytes));
    for (const std::string& problem : appcast.problems)
        context.log("In the list of updates, " + problem);
    putInstallableFirst(appcast, context.installer);
    co_return appcast;
}

SelectionRules UpdateCheck::rules() const {
    SelectionRules rules;
    rules.installedVersion = context.settings.installedVersion;
    rules.system = context.system;
    rules.channels = context.settings.channels;
    rules.channels.insert(rules.channels.end(), context.state.channels.begin(),
                          context.state.channels.end());
    rules.now = context.now();
    rules.kind = kind;
    rules.state = context.state;
    return rules;
}

Task<void> UpdateCheck::showNothingNew(Selection selection) {
    if (!visible)
        co_return;
    UpdateMessage message =
        selection.unsupported
            ? unsupportedMessage(context.settings, *selection.unsupported, context.system)
            : upToDateMessage(context.settings);
    stage = Stage::asking;
    co_await driver().showMessage(message.heading, message.sentence);
}

InstallKind UpdateCheck::installKind(const SelectedUpdate& update) const {
    return update.informational ? InstallKind::informationalOnly
                                : context.installer.kind(update.item);
}

bool UpdateCheck::installsWithoutAsking(const SelectedUpdate& update, InstallKind how) const {
    return kind == CheckKind::scheduled && context.settings.downloadsUnasked && !update.major &&
           how == InstallKind::replaceInPlace && !context.network.isMetered();
}

Task<void> UpdateCheck::offer(SelectedUpdate update) {
    const InstallKind how = installKind(update);
    UpdateOffer offer = offerOf(context.settings, update);
    offer.informationalOnly = how == InstallKind::informationalOnly;
    if (!update.informational)
        offer.obstacle = context.installer.obstacle();
    if (!context.preparedVersion.empty() && context.preparedVersion == update.item.version) {
        co_await putInPlace(update.item, offer, how);
        co_return;
    }
    if (installsWithoutAsking(update, how)) {
        co_await install(update.item, offer, how);
        co_return;
    }
    offer.releaseNotes = co_await notesOf(update.item);
    stage = Stage::asking;
    const auto asked = context.now();
    const UpdateChoice choice = co_await driver().showOffer(offer, kind);
    if (choice == UpdateChoice::skipThisVersion)
        skip(update, context.state);
    else
        forgetSkip(update, context.state);
    co_await context.saveState();
    if (choice != UpdateChoice::install)
        co_return;
    visible = true;
    if (context.now() - asked >= longestOffer)
        co_await lookAgain(std::move(update));
    else
        co_await take(std::move(update), std::move(offer), how);
}

Task<void> UpdateCheck::take(SelectedUpdate update, UpdateOffer offer, InstallKind how) {
    if (how == InstallKind::informationalOnly)
        co_await openInformation(update.item);
    else
        co_await install(update.item, offer, how);
}

// Meanwhile it may have been withdrawn, or followed by another one.
Task<void> UpdateCheck::lookAgain(SelectedUpdate offered) {
    enter(Stage::checking);
    Selection selection = co_await lookForUpdate();
    if (!selection.update) {
        co_await showNothingNew(std::move(selection));
        co_return;
    }
    SelectedUpdate& update = *selection.update;
    if (update.item.version != offered.item.version) {
        co_await this->offer(std::move(update));
        co_return;
    }
    const InstallKind how = installKind(update);
    co_await take(update, offerOf(context.settings, update), how);
}

Task<ReleaseNotes> UpdateCheck::notesOf(AppcastItem item) {
    ReleaseNotes notes = readReleaseNotes(item.description, item.descriptionFormat);
    if (!notes.empty() || !item.releaseNotesLink)
        co_return notes;
    const Url link = *item.releaseNotesLink;
    if (context.settings.requiresSignedFeed) {
        context.log("The release notes are outside the signed feed and are not shown.");
        co_return notes;
    }
    try {
        const Bytes page = co_await unlessCancelled(context.transport.fetch(link, notesLimit));
        notes = readReleaseNotes(kelo::textOf(page), notesFormatOf(link));
    } catch (...) {
        // The update can be offered without its notes.
        const UpdateError error = UpdateError::from(std::current_exception());
        if (error.kind() == UpdateErrorKind::cancelled)
            throw;
        context.log(std::string("The release notes could not be fetched: ") + error.what());
    }
    co_return notes;
}

Task<void> UpdateCheck::openInformation(AppcastItem item) {
    if (item.link) {
        context.openLink(*item.link);
        co_return;
    }
    const UpdateMessage message =
        noLinkMessage(context.settings, item, context.installer.obstacle());
    co_await driver().showMessage(message.heading, message.sentence);
}

Task<void> UpdateCheck::install(AppcastItem item, UpdateOffer offer, InstallKind how) {
    const AnnouncedArchive announced =
        announcedArchive(*item.enclosure, context.settings.publicKey);
    progress = DownloadProgress{0, announced.length};
    enter(Stage::downloading);
    const auto moved = [this](DownloadProgress now) {
        progress = now;
        if (visible)
            showStage();
    };
    DownloadedArchive archive = co_await unlessCancelled(
        download(item, announced, context.downloads, context.transport, context.worker, moved));
    enter(Stage::preparing);
    VerifiedArchive verified = co_await verify(std::move(archive), announced, context.worker);
    context.preparedVersion.clear();
    co_await context.installer.prepare(std::move(verified));
    context.preparedVersion = item.version;
    co_await putInPlace(item, offer, how);
}

Task<void> UpdateCheck::putInPlace(AppcastItem item, UpdateOffer offer, InstallKind how) {
    if (how == InstallKind::replaceInPlace) {
        stage = Stage::asking;
        const RelaunchChoice choice = co_await driver().showReadyToRelaunch(offer);
        if (choice == RelaunchChoice::later)
            co_return;
        visible = true;
        enter(Stage::preparing);
    }
    context.preparedVersion.clear();
    co_await context.installer.installAndRelaunch();
    relaunching = how == InstallKind::replaceInPlace;
    if (how == InstallKind::handToPackageManager) {
        const UpdateMessage message = handedOverMessage(context.settings, item);
        stage = Stage::asking;
        co_await driver().showMessage(message.heading, message.sentence);
    }
}

Task<void> UpdateCheck::report(std::exception_ptr error) {
    const UpdateError failure = UpdateError::from(error);
    if (failure.kind() == UpdateErrorKind::cancelled)
        co_return;
    context.log(std::string("Looking for an update failed: ") + failure.what());
    if (!visible)
        co_return;
    stage = Stage::asking;
    co_await driver().showFailure(failure.localizedDescription());
}

} // namespace kelo::updater
