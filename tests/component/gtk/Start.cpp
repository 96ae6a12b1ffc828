// Starts the desktop side as the program does, for the tests of a second start, of the command line
// and of a start without a session bus. Prints what the app was asked for. Exits after its window
// appeared or its "wave" action ran.
#include "component/gtk/FakeApp.h"
#include "linux/gobject/GLibMainLoop.h"
#include "linux/gtk/application/GtkApplicationHost.h"

#include <iostream>
#include <locale>
#include <utility>

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
    std::vector<kelo::platform::ProgramAction> actions() override {
        return {{"wave", [this] {
                     std::cout << "wave" << std::endl;
                     application.terminate();
                 }}};
    }
    void sayWhatWasLoaded() const {
        if (fake.page)
            for (const auto& request : fake.page->loads)
                std::cout << "load " << request.url.absoluteString() << std::endl;
    }

private:
    kelo::platform::Application& application;
    kelo::tests::FakeApp fake;
};

} // namespace

int main(int count, char** words) {
    kelo::gobject::GLibMainLoop loop;
    kelo::MainLoop::Installation installation(loop);
    using kelo::command::Option;
    kelo::gtk::HostSettings settings;
    settings.options.push_back({"wave", "Wave once"});
    settings.options.push_back({"weather", "Say what it is like", Option::Kind::report});
    settings.options.push_back({"rain", "Make some", Option::Kind::report});
    kelo::gtk::GtkApplicationHost host(
        {words, words + count},
        {{"weather", [] { return std::string("fine\n"); }},
         {"rain", [] { return kelo::command::Report("dry\n", false); }}},
        std::move(settings));
    EndingApp app(host);
    const int status = host.run(app);
    app.sayWhatWasLoaded();
    // Streams of other rooms would group the digits of a port number under the user's locale.
    return std::locale() == std::locale::classic() ? status : 1;
}
