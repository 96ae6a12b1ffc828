#pragma once

#include "base/async/Continuation.h"
#include "updater/driver/UserDriver.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::test {

/// Records what the windows show and answers them. Must outlive the driver.
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

    std::optional<CheckedContinuation<updater::UpdateChoice>> choice;
    std::optional<CheckedContinuation<updater::RelaunchChoice>> relaunch;
    std::optional<CheckedContinuation<void>> acknowledge;
    std::optional<CheckedContinuation<bool>> automatic;
};

class FakeUserDriver final : public updater::UserDriver {
public:
    explicit FakeUserDriver(UserBefore& user) : user(user) { ++user.driversMade; }

    void showChecking(std::function<void()> cancel) override {
        show("checking");
        user.cancel = std::move(cancel);
    }
    Task<updater::UpdateChoice> showOffer(updater::UpdateOffer offer,
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
    Task<updater::RelaunchChoice> showReadyToRelaunch(updater::UpdateOffer offer) override {
        show("ready " + offer.offeredVersion);
        return ask(user.relaunch);
    }
    Task<void> showMessage(std::string heading, std::string sentence) override {
        show("message " + heading);
        user.sentence = std::move(sentence);
        return ask(user.acknowledge);
    }
    Task<void> showFailure(std::string sentence) override {
        show("failure");
        user.sentence = std::move(sentence);
        return ask(user.acknowledge);
    }
    Task<bool> askForAutomaticChecks(std::string programName) override {
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
    static Task<T> ask(std::optional<CheckedContinuation<T>>& question) {
        co_return co_await withCheckedContinuation<T>(
            [&question](CheckedContinuation<T> flow) { question = std::move(flow); });
    }

    UserBefore& user;
};

} // namespace kelo::test
