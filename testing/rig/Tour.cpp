// kelo-tour: walks the whole road from the first start to a sign-in with a passkey, as a person
// would, and keeps a picture of every step. scripts/run starts it where there is no display.

#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"
#include "testing/rig/KeloProcess.h"
#include "testing/rig/User.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>

namespace kelo::rig {

namespace {

namespace fs = std::filesystem;

constexpr const char* email = "ada@example.org";
constexpr const char* password = "analytical engine";

class Tour {
public:
    Tour(fs::path build, fs::path pictures)
        : build(std::move(build)), pictures(std::move(pictures)), user(desktop) {}

    void run() {
        const auto start = std::chrono::steady_clock::now();
        step("login-page", "Kelo opens on the login page", [this] { open(); });
        step("password", "Sign in with the password, in the page", [this] {
            user.signInWithPassword(email, password);
            user.awaitSignedIn("Ada");
        });
        step("prompt", "Account > Register a Passkey on This Mac…", [this] {
            user.chooseRegister();
            user.awaitPrompt();
        });
        step("sheet-register", "Confirm with the password; the passkey sheet opens", [this] {
            user.answerPrompt(password);
            user.awaitSheet();
        });
        step("registered", "Confirm with the login password; the passkey is registered", [this] {
            user.confirmSheet(desktop.loginPassword);
            user.awaitAlert("Passkey registered on this Mac.");
        });
        step("signed-out", "Sign out, in the page", [this] {
            user.closeAlert();
            user.signOut();
        });
        step("sheet-sign-in", "Press \"Sign in with passkey\"; the sheet opens", [this] {
            user.pressSignInWithPasskey();
            user.awaitSheet();
        });
        step("cancelled", "Cancel; the reason stands below the button", [this] {
            user.cancelSheet();
            user.awaitError("The passkey request was cancelled.");
        });
        step("signed-in", "Try again and confirm; signed in with the passkey", [this] {
            user.pressSignInWithPasskey();
            user.confirmSheet(desktop.loginPassword);
            user.awaitSignedIn("Ada");
        });
        print("The whole road", std::chrono::steady_clock::now() - start);
    }

private:
    void open() {
        service.emplace(build, build / "demo-authority", folder.path() / "service.log");
        kelo.emplace(build, folder.path(), folder.path() / "kelo.log");
        user.awaitLoginPage();
    }

    void step(const std::string& name, const std::string& what,
              const std::function<void()>& action) {
        ++number;
        const auto start = std::chrono::steady_clock::now();
        try {
            action();
        } catch (const std::exception& error) {
            std::cerr << "Step " << number << " failed: " << what << "\n" << error.what() << "\n";
            if (kelo)
                std::cerr << "Kelo printed:\n" << kelo->printed() << "\n";
            if (service)
                std::cerr << "The service printed:\n" << service->printed() << "\n";
            picture(name + "-FAILED");
            throw;
        }
        print(what, std::chrono::steady_clock::now() - start);
        picture(name);
    }

    void print(const std::string& what, std::chrono::steady_clock::duration time) const {
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%7.2f s  ",
                      std::chrono::duration<double>(time).count());
        std::cout << seconds << what << std::endl;
    }

    void picture(const std::string& name) const {
        char prefix[8];
        std::snprintf(prefix, sizeof prefix, "%02d-", number);
        desktop.screen.capture(pictures / (prefix + name + ".png"));
    }

    fs::path build;
    fs::path pictures;
    PrivateDesktop desktop;
    User user;
    test::TemporaryFolder folder;
    std::optional<DemoService> service;
    std::optional<KeloProcess> kelo;
    int number = 0;
};

} // namespace

} // namespace kelo::rig

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "Usage: kelo-tour BUILD-FOLDER PICTURES-FOLDER\n";
        return 2;
    }
    try {
        kelo::rig::Tour(std::filesystem::absolute(arguments[1]),
                        std::filesystem::absolute(arguments[2]))
            .run();
    } catch (const std::exception&) {
        return 1;
    }
    return 0;
}
