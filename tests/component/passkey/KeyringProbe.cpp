#include "component/ScopedMainLoop.h"

#include "authenticator/keys/SoftwareKeyStore.h"
#include "base/Failure.h"
#include "linux/authorization/keyring/KeyringState.h"
#include "linux/authorization/keyring/SecretServiceWrappingKeySource.h"
#include "linux/gobject/WorkerThread.h"
#include "linux/tpm/TpmKeyStore.h"

#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>

// Uses the keyring of the session bus it is started on, as a process of its own, since GIO keeps
// one session bus for the life of a process:
//   create              makes a key and prints it wrapped, in hexadecimal
//   sign WRAPPED        signs with it and prints "signed"
//   state               prints the state of the keyring
//   keep-in-own         moves the wrapping key into a collection of its own, and prints "moved"
//   keep-in-default     moves it back
//   sign-and-stay WRAPPED  as sign, and stays until it reads a line
//   create-in-chip TRANSPORT, sign-in-chip TRANSPORT WRAPPED   the same with a key in that chip
//   state-and-give-up   begins as state, but gives up when it reads a line, and prints "given up"
//                       unless the answer came only after the bus had ended the call by itself
//   create-and-give-up  begins as create, but drops the request when it reads a line, and prints
//                       "given up" once the worker is free again
// A failure is printed as "error: " and its sentence.

namespace kelo {

namespace {

using gobject::WorkerThread;

std::string toHex(ByteView bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 0xF];
    }
    return text;
}

Bytes fromHex(const std::string& text) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    return bytes;
}

Task<std::string> create(authenticator::KeyStore& keys) {
    const authenticator::CreatedKey created = co_await keys.create();
    co_return toHex(created.wrappedPrivateKey);
}

Task<std::string> sign(authenticator::KeyStore& keys, std::string wrapped) {
    Bytes digest(32, 0x5A);
    co_await keys.sign(fromHex(wrapped), std::move(digest));
    co_return "signed";
}

Task<void> record(std::string& outcome, Task<std::string> task) {
    try {
        outcome = co_await task;
    } catch (const Failure& error) {
        outcome = "error: " + error.localizedDescription();
        std::fprintf(stderr, "cause: %s\n", error.what());
    }
}

Task<void> passThrough(Worker& worker, std::string& outcome) {
    auto job = [] {};
    co_await onWorker(worker, std::move(job));
    outcome = "given up";
}

std::string nameOf(authorization::KeyringState state) {
    switch (state) {
    case authorization::KeyringState::absent:
        return "absent";
    case authorization::KeyringState::empty:
        return "empty";
    case authorization::KeyringState::locked:
        return "locked";
    case authorization::KeyringState::unlocked:
        return "unlocked";
    case authorization::KeyringState::own:
        break;
    }
    return "own";
}

/// What needs no key store. Nothing for other commands.
std::optional<std::string> runAtOnce(const std::string& command) {
    try {
        if (command == "state")
            return nameOf(authorization::keyringState());
        if (command == "keep-in-own")
            authorization::keepWrappingKeyInOwnCollection();
        else if (command == "keep-in-default")
            authorization::keepWrappingKeyInDefaultCollection();
        else
            return std::nullopt;
        return "moved";
    } catch (const Failure& error) {
        std::fprintf(stderr, "cause: %s\n", error.what());
        return "error: " + error.localizedDescription();
    }
}

int runWithChip(const std::string& command, const std::string& chip, const std::string& wrapped) {
    const ScopedMainLoop loop;
    WorkerThread worker;
    tpm::TpmKeyStore keys(chip, std::make_shared<authorization::SecretServiceWrappingKeySource>(),
                          worker);
    std::string outcome;
    spawn(record(outcome, command == "sign-in-chip" ? sign(keys, wrapped) : create(keys)));
    const bool ended = ScopedMainLoop::runUntil([&] { return !outcome.empty(); });
    dropSpawnedTasks();
    std::puts(outcome.c_str());
    return ended ? 0 : 1;
}

/// Ends a question about the state from another thread.
int giveUpState() {
    constexpr std::chrono::seconds timeOfTheBus{25};
    const auto begin = std::chrono::steady_clock::now();
    std::jthread asking([](const std::stop_token& stop) { authorization::keyringState(stop); });
    std::getchar();
    asking.request_stop();
    asking.join();
    const auto taken = std::chrono::steady_clock::now() - begin;
    std::puts(taken < timeOfTheBus ? "given up" : "waited");
    return 0;
}

int run(const std::string& command, const std::string& argument) {
    if (command == "state-and-give-up")
        return giveUpState();
    if (const auto outcome = runAtOnce(command)) {
        std::puts(outcome->c_str());
        return 0;
    }
    const ScopedMainLoop loop;
    WorkerThread worker;
    authenticator::SoftwareKeyStore keys(
        std::make_shared<authorization::SecretServiceWrappingKeySource>(), worker);
    std::string outcome;
    spawn(record(outcome, command.starts_with("sign") ? sign(keys, argument) : create(keys)));
    if (command == "create-and-give-up") {
        GIOChannel* input = g_io_channel_unix_new(0);
        bool told = false;
        g_io_add_watch(
            input, G_IO_IN,
            [](GIOChannel*, GIOCondition, gpointer flag) -> gboolean {
                *static_cast<bool*>(flag) = true;
                return G_SOURCE_REMOVE;
            },
            &told);
        g_io_channel_unref(input);
        ScopedMainLoop::runUntil([&] { return told || !outcome.empty(); });
        if (outcome.empty()) {
            dropSpawnedTasks();
            spawn(passThrough(worker, outcome));
        }
    }
    const bool ended = ScopedMainLoop::runUntil([&] { return !outcome.empty(); });
    dropSpawnedTasks();
    std::puts(outcome.c_str());
    std::fflush(stdout);
    if (command == "sign-and-stay")
        std::getchar();
    return ended ? 0 : 1;
}

} // namespace

} // namespace kelo

int main(int count, char** arguments) {
    const std::string command = count > 1 ? arguments[1] : "";
    const std::string argument = count > 2 ? arguments[2] : "";
    if (command.ends_with("-in-chip"))
        return kelo::runWithChip(command, argument, count > 3 ? arguments[3] : "");
    return kelo::run(command, argument);
}
