#include "app/UpdaterController.h"

#include "platform/Desktop.h"

namespace kelo::app {

UpdaterController::UpdaterController()
    : controller(platform::Desktop::current().makeStandardUpdaterController()) {}

UpdaterController& UpdaterController::shared() {
    // Never released: at the process's end the desktop is gone before the statics are.
    static UpdaterController& instance =
        *std::unique_ptr<UpdaterController>(new UpdaterController).release();
    return instance;
}

} // namespace kelo::app
