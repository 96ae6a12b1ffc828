#pragma once

#include "platform/Continuation.h"
#include "updater/UserDriver.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::test {

/// What the windows showed, and the hand that presses their buttons. Outlives the driver.
struct UserBefore {
    /// One line for each window, in order: "checking", "offer 1.0 -> 1.1"...
    std::vector<std::string> shown;
    std::optional<updater::UpdateOffer> offer;
    std::optional<updater::CheckKind> offerKind;
    std::function<void()> cancel;
    std::vector<std::uint64_t> received;
    std::string sentence;
    int broughtToFront = 0;
    int driversMade = 0;
    bool open = false;

    std::optional<platform::CheckedContinuation<updater::UpdateChoice>> choice;
    std::optional<platform::CheckedContinuation<updater::RelaunchChoice>> relaunch;
    std::optional<platform::CheckedContinuation<void>> acknowledge;
    std::optional<platform::CheckedContinuation<bool>> automatic;
};

class FakeUserDriver final : public updater::UserDriver {
public:
    explicit FakeUserDriver(UserBefore& user) : user(user) { ++user.driversMade; }

    void showChecking(std::function<void()> cancel) override {
        show("checking");
        user.cancel = std::move(cancel);
    }
    platform::Task<updater::UpdateChoice> showOffer(updater::UpdateOffer offer,
                                                    updater::CheckKind kind) override {
        show("offer " + offer.installedVersion + " -> " + offer.offeredVersion);
        user.offer = offer;
        user.offerKind = kind;
        return ask(user.choice);
    }
    void showDownload(updater::DownloadProgress progress, std::function<void()> cancel) override {
        if (user.shown.empty() || user.shown.back() != "download")
            show("download");
        user.received.push_back(progress.received);
        user.cancel = std::move(cancel);
    }
    void showPreparing() override { show("preparing"); }
    platform::Task<updater::RelaunchChoice>
    showReadyToRelaunch(updater::UpdateOffer offer) override {
        show("ready " + offer.offeredVersion);
        return ask(user.relaunch);
    }
    platform::Task<void> showMessage(std::string heading, std::string sentence) override {
        show("message " + heading);
        user.sentence = std::move(sentence);
        return ask(user.acknowledge);
    }
    platform::Task<void> showFailure(std::string sentence) override {
        show("failure");
        user.sentence = std::move(sentence);
        return ask(user.acknowledge);
    }
    platform::Task<bool> askForAutomaticChecks(std::string programName) override {
        show("automatic checks of " + programName);
        return ask(user.automatic);
    }
    bool bringToFront() override {
        if (user.open)
            ++user.broughtToFront;
        return user.open;
    }
    void dismiss() override { user.open = false; }

private:
    void show(std::string what) {
        user.shown.push_back(std::move(what));
        user.open = true;
    }

    template <typename T>
    static platform::Task<T> ask(std::optional<platform::CheckedContinuation<T>>& question) {
        co_return co_await platform::withCheckedContinuation<T>(
            [&question](platform::CheckedContinuation<T> flow) { question = std::move(flow); });
    }

    UserBefore& user;
};

} // namespace kelo::test
