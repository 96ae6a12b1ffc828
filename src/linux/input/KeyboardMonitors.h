#pragma once

#include "linux/input/ModifierSources.h"
#include "linux/input/source/KeyboardFocus.h"
#include "platform/EventMonitors.h"

#include <functional>
#include <memory>

namespace kelo::input {

/// What KeyboardMonitors learns from.
struct KeyboardWatch {
    std::unique_ptr<KeyboardFocus> focus;
    /// The first of them that is available and starts is used, the others are dropped.
    SourceList everyProgram;
    /// Used where none of those tells of our own windows; null for none.
    std::unique_ptr<ModifierSource> ownWindows;
};

/// The keyboard as the seam has it. GTK must be up before the first monitor is added; where it is
/// not, there is none. However many monitors are added, one source of modifiers serves them all.
class KeyboardMonitors final : public platform::EventMonitors {
public:
    using MakeWatch = std::function<KeyboardWatch()>;

    /// Watches the display that the toolkit is connected to.
    KeyboardMonitors();
    /// Watches what it is given; asked for when the first monitor of modifiers is added.
    explicit KeyboardMonitors(MakeWatch makeWatch);
    ~KeyboardMonitors() override;
    KeyboardMonitors(const KeyboardMonitors&) = delete;
    KeyboardMonitors& operator=(const KeyboardMonitors&) = delete;

    std::shared_ptr<platform::EventMonitor> addGlobalMonitor(platform::EventMask matching,
                                                             GlobalHandler handler) override;
    std::shared_ptr<platform::EventMonitor> addLocalMonitor(platform::EventMask matching,
                                                            LocalHandler handler) override;

private:
    class Modifiers;
    class KeyPresses;

    Modifiers& watchedModifiers();

    MakeWatch makeWatch;
    std::unique_ptr<Modifiers> modifiers;
    std::unique_ptr<KeyPresses> keyPresses;
};

} // namespace kelo::input
