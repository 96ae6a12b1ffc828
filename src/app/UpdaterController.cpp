#include "app/UpdaterController.h"

namespace kelo {

UpdaterController& UpdaterController::shared() {
    static UpdaterController instance;
    return instance;
}

} // namespace kelo
