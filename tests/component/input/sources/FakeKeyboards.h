#pragma once

#include "EventBytes.h"

#include "linux/input/evdev/EvdevModifierSource.h"
#include "posix/FileDescriptor.h"
#include "testing/TemporaryFolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <map>
#include <memory>
#include <string>

namespace kelo {

/// One keyboard: a pipe, and what the kernel would report about it.
struct FakeKeyboard {
    posix::FileDescriptor reading;
    posix::FileDescriptor writing;
    bool isKeyboard = true;
    bool mayBeOpened = true;
    bool holdsBackOtherKeys = true;
    input::HeldKeys held;
    bool othersDown = false;
    /// Whether the kernel would deliver other keys.
    bool isOpen = false;
    /// The calls it received, in order.
    std::string asked;

    FakeKeyboard() { connect(); }
    /// Whoever opens it from now on gets what is typed from now on.
    void connect() {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0) {
            reading = posix::FileDescriptor(ends[0]);
            writing = posix::FileDescriptor(ends[1]);
        }
    }
    bool type(const EventBytes& bytes) const {
        return ::write(writing.get(), bytes.data(), bytes.size()) ==
               static_cast<ssize_t>(bytes.size());
    }
};

/// A login session as a test has it.
class FakeSeatSession final : public session::SeatSession {
public:
    struct State {
        bool certain = true;
        bool active = true;
        std::string seat = session::firstSeat;
        Changed changed;

        void set(bool isActive) {
            active = isActive;
            const Changed told = changed;
            told();
        }
    };
    FakeSeatSession(std::shared_ptr<State> state, Changed changed) : state(std::move(state)) {
        this->state->changed = std::move(changed);
    }
    bool isCertain() const override { return state->certain; }
    bool isActive() const override { return state->active; }
    std::string seat() const override { return state->seat; }

private:
    std::shared_ptr<State> state;
};

/// The seats of devices as a test assigns them.
class FakeSeats final : public input::DeviceSeats {
public:
    struct State {
        std::map<std::string, std::string> seats;
        int questions = 0;
        Changed changed;

        void assign(const std::string& device, const std::string& seat) {
            seats[device] = seat;
            if (changed)
                changed(device);
        }
    };
    FakeSeats(std::shared_ptr<State> state, Changed changed) : state(std::move(state)) {
        if (changed)
            this->state->changed = std::move(changed);
    }
    std::string seatOf(const std::string& device) const override {
        ++state->questions;
        const auto found = state->seats.find(device);
        return found == state->seats.end() ? session::firstSeat : found->second;
    }

private:
    std::shared_ptr<State> state;
};

/// A folder of input devices. Each is a file in it, so that it comes and goes as the folder's
/// watch sees it, and a FakeKeyboard behind it.
class FakeKeyboards {
public:
    FakeKeyboard& plug(const std::string& name, FakeKeyboard keyboard = {}) {
        auto& plugged = keyboards[name] = std::make_shared<FakeKeyboard>(std::move(keyboard));
        std::ofstream(path() / name) << "device";
        return *plugged;
    }
    /// The device first, as the kernel does it, then its node.
    void unplug(const std::string& name) {
        keyboards.at(name)->writing = posix::FileDescriptor();
        std::filesystem::remove(path() / name);
    }
    /// Another device takes the place of one, in one step.
    void replace(const std::string& name) {
        keyboards[name] = std::make_shared<FakeKeyboard>();
        std::ofstream(path() / "new") << "device";
        std::filesystem::rename(path() / "new", path() / name);
    }
    /// The kernel gives its users no events any more, while its node stays.
    void revoke(const std::string& name) { keyboards.at(name)->writing = posix::FileDescriptor(); }
    /// As a rule of the system's would, after the node appeared.
    void permit(const std::string& name) {
        keyboards.at(name)->mayBeOpened = true;
        std::filesystem::permissions(path() / name, std::filesystem::perms::owner_read);
    }

    const std::filesystem::path& path() const { return folder.path(); }
    /// No device is described, so that each has to be opened.
    input::EvdevModifierSource::Devices devices() {
        return {path(), path() / "descriptions",
                [this](const std::filesystem::path& path) { return open(path.filename()); },
                [this](input::DeviceSeats::Changed changed) {
                    return std::make_unique<FakeSeats>(seats, std::move(changed));
                },
                [this](session::SeatSession::Changed changed) {
                    return std::make_unique<FakeSeatSession>(session, std::move(changed));
                }};
    }
    /// Has the system describe the device's keys.
    void describe(const std::string& name, const std::string& keys) const {
        const auto folder = path() / "descriptions" / name / "device" / "capabilities";
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "key") << keys << "\n";
    }
    std::shared_ptr<FakeSeats::State> seats = std::make_shared<FakeSeats::State>();
    std::shared_ptr<FakeSeatSession::State> session = std::make_shared<FakeSeatSession::State>();
    /// How many devices are open now.
    int openNow = 0;
    /// How many were opened in total.
    int opened = 0;

private:
    class Device final : public input::EvdevDevice {
    public:
        Device(std::shared_ptr<FakeKeyboard> keyboard, int& open)
            : keyboard(std::move(keyboard)), open(open) {
            ++open;
        }
        ~Device() override { --open; }
        int descriptor() const override { return keyboard->reading.get(); }
        bool isKeyboard() const override { return keyboard->isKeyboard; }
        bool deliverOnlyHeldKeys() override {
            keyboard->asked += "mask ";
            keyboard->isOpen = keyboard->isOpen && !keyboard->holdsBackOtherKeys;
            return keyboard->holdsBackOtherKeys;
        }
        bool deliverOtherKeys() override {
            keyboard->asked += "open ";
            keyboard->isOpen = true;
            return true;
        }
        std::optional<input::KeysDown> keysDown() const override {
            keyboard->asked += "down ";
            discardUnread();
            return input::KeysDown{keyboard->held, keyboard->othersDown};
        }
        std::optional<input::HeldKeys> heldKeys() const override {
            keyboard->asked += "held ";
            return keyboard->held;
        }

    private:
        /// As the kernel does when it is asked what is down.
        void discardUnread() const {
            std::byte bytes[256];
            while (::read(keyboard->reading.get(), bytes, sizeof(bytes)) > 0) {
            }
        }

        std::shared_ptr<FakeKeyboard> keyboard;
        int& open;
    };

    std::unique_ptr<input::EvdevDevice> open(const std::string& name) {
        ++opened;
        const auto found = keyboards.find(name);
        if (found == keyboards.end() || !found->second->mayBeOpened)
            return nullptr;
        return std::make_unique<Device>(found->second, openNow);
    }

    test::TemporaryFolder folder;
    std::map<std::string, std::shared_ptr<FakeKeyboard>> keyboards;
};

} // namespace kelo
