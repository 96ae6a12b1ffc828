#include "app/KeloApp.h"
#include "linux/bundle/ProgramTree.h"
#include "linux/desktop/LinuxDesktop.h"
#include "linux/glib/GLibMainLoop.h"
#include "linux/glib/LargeBlocks.h"
#include "linux/glib/RendererChoice.h"
#include "linux/webkit/NvidiaBlankWindow.h"
#include "platform/Spawn.h"

int main(int count, char** words) {
    kelo::desktop::keepLargeBlocksApart();
    kelo::desktop::repairProgramTree();
    // Both set the environment, so they come before the first thread.
    kelo::desktop::chooseRenderer();
    kelo::desktop::avoidBlankWindowOnNvidia();

    kelo::desktop::GLibMainLoop loop;
    const kelo::platform::MainLoop::Installation loopInstallation(loop);
    kelo::desktop::confirmProgramTreeLater();
    kelo::desktop::LinuxDesktop desktop({words, words + count});
    const kelo::platform::Desktop::Installation desktopInstallation(desktop);

    kelo::KeloApp app;
    const int status = desktop.application().run(app);
    // Flows that are still waiting refer to the objects above.
    kelo::platform::dropSpawnedTasks();
    return status;
}
