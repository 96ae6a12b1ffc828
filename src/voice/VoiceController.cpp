#include "voice/VoiceController.h"

#include "log/DebugLog.h"

namespace kelo {

void VoiceController::start(const std::shared_ptr<WebModel>&) {
    debugLog("VoiceController.start — widget = web /widget host");
}

} // namespace kelo
