#include "app/KeloApp.h"
#include "base/async/Spawn.h"
#include "linux/desktop/LinuxDesktop.h"
#include "linux/gobject/GLibMainLoop.h"
#include "linux/startup/LargeBlocks.h"
#include "linux/startup/NvidiaBlankWindow.h"
#include "linux/startup/ProgramTree.h"
#include "linux/startup/RendererChoice.h"

int main(int count, char** words) {
    kelo::startup::keepLargeBlocksApart();
    kelo::startup::repairProgramTree();
    // Both set the environment, so they come before the first thread.
    kelo::startup::chooseRenderer();
    kelo::startup::avoidBlankWindowOnNvidia();

    kelo::gobject::GLibMainLoop loop;
    const kelo::MainLoop::Installation loopInstallation(loop);
    kelo::startup::confirmProgramTreeLater();
    kelo::desktop::LinuxDesktop desktop({words, words + count});
    const kelo::platform::Desktop::Installation desktopInstallation(desktop);

    kelo::app::KeloApp app;
    const int status = desktop.application().run(app);
    // Flows that are still waiting refer to the objects above.
    kelo::dropSpawnedTasks();
    return status;
}
