#pragma once

#include "platform/ObservableObject.h"

#include <memory>

namespace kelo {

class WebModel;

/// Will bind the global hotkey to the voice widget. One for the life of the process; start() is
/// called each time a main window's content appears.
class VoiceController final : public platform::ObservableObject {
public:
    /// The web model is accepted and not used: the widget has a web view of its own.
    void start(const std::shared_ptr<WebModel>& web);
};

} // namespace kelo
