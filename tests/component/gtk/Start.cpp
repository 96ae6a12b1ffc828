// Starts the desktop side as the program does, for the tests of a second start and of a start
// without a session bus. Prints what the system was asked for; ends when its window has appeared.
#include "component/gtk/FakeApp.h"
#include "linux/glib/GLibMainLoop.h"
#include "linux/gtk/GtkApplicationHost.h"

#include <iostream>

namespace {

class EndingApp final : public kelo::platform::App {
public:
    explicit EndingApp(kelo::platform::Application& application) : application(application) {}
    kelo::platform::ApplicationDelegate& applicationDelegate() override {
        return fake.applicationDelegate();
    }
    kelo::platform::SceneGraph body() override {
        std::cout << "body" << std::endl;
        auto scenes = fake.body();
        std::get<kelo::platform::WindowGroup>(scenes.front()).onAppear = [this] {
            std::cout << "appear" << std::endl;
            application.terminate();
        };
        return scenes;
    }

private:
    kelo::platform::Application& application;
    kelo::tests::FakeApp fake;
};

} // namespace

int main() {
    kelo::desktop::GLibMainLoop loop;
    kelo::platform::MainLoop::Installation installation(loop);
    kelo::desktop::GtkApplicationHost host;
    EndingApp app(host);
    return host.run(app);
}
