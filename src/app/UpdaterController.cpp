#include "app/UpdaterController.h"

#include "platform/Desktop.h"

namespace kelo::app {

UpdaterController::UpdaterController()
    : controller(platform::Desktop::current().makeStandardUpdaterController()) {}

UpdaterController& UpdaterController::shared() {
    // A union does not destroy its member. That is wanted here: static objects are destroyed after
    // the desktop, which the updater refers to.
    static union Holder {
        Holder() : instance() {}
        ~Holder() {}
        UpdaterController instance;
    } holder;
    return holder.instance;
}

} // namespace kelo::app
