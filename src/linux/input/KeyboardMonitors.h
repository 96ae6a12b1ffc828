#pragma once

#include "linux/input/source/KeyboardFocus.h"
#include "linux/input/source/ModifierSource.h"
#include "platform/EventMonitors.h"

#include <functional>
#include <memory>

namespace kelo::input {

/// The sources that KeyboardMonitors uses.
struct KeyboardWatch {
    std::unique_ptr<KeyboardFocus> focus;
    /// The first one that starts is used. The others are destroyed.
    SourceList everyProgram;
    /// Used if the chosen source does not cover our own windows; may be null.
    std::unique_ptr<ModifierSource> ownWindows;
};

/// The keyboard monitors of the seam. GTK must be initialized before a monitor is added: otherwise,
/// the add functions return null. All monitors share one source of modifiers.
class KeyboardMonitors final : public platform::EventMonitors {
public:
    using MakeWatch = std::function<KeyboardWatch()>;

    /// Uses the sources of the display that the toolkit is connected to.
    KeyboardMonitors();
    /// Uses these sources. Called when the first monitor of modifiers is added.
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
    KeyPresses& watchedKeyPresses();

    MakeWatch makeWatch;
    std::unique_ptr<Modifiers> modifiers;
    std::unique_ptr<KeyPresses> keyPresses;
};

} // namespace kelo::input
