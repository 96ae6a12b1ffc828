#include "app/KeloApp.h"
#include "base/async/Spawn.h"
#include "linux/desktop/LinuxDesktop.h"
#include "linux/gobject/GLibMainLoop.h"
#include "linux/integration/DesktopIntegration.h"
#include "linux/startup/Startup.h"

int main(int count, char** words) {
    kelo::startup::ProcessStart start({words, words + count});

    kelo::gobject::GLibMainLoop loop;
    const kelo::MainLoop::Installation loopInstallation(loop);
    start.confirmLater();
    kelo::integration::followLater();
    kelo::desktop::LinuxDesktop desktop({words, words + count}, start.failedUpdate());
    const kelo::platform::Desktop::Installation desktopInstallation(desktop);

    kelo::app::KeloApp app;
    const int status = desktop.application().run(app);
    // Suspended tasks refer to the objects above.
    kelo::dropSpawnedTasks();
    return status;
}
