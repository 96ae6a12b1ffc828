#pragma once

#include "platform/EventMonitors.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kelo::fakes {

/// A keyboard for tests. The focus is in another program, or in a window of ours.
class FakeEventMonitors final : public platform::EventMonitors {
public:
    std::shared_ptr<platform::EventMonitor> addGlobalMonitor(platform::EventMask matching,
                                                             GlobalHandler handler) override {
        // Keys that are addressed to other programs are never offered.
        constexpr auto offered =
            platform::event_mask::flagsChanged | platform::event_mask::otherPress;
        if (!offersGlobal || !(matching & offered))
            return nullptr;
        globals.emplace_back(matching, std::move(handler));
        return std::make_shared<platform::EventMonitor>();
    }
    std::shared_ptr<platform::EventMonitor> addLocalMonitor(platform::EventMask matching,
                                                            LocalHandler handler) override {
        if (!offersLocal)
            return nullptr;
        locals.emplace_back(matching, std::move(handler));
        return std::make_shared<platform::EventMonitor>();
    }

    /// Another program has the focus.
    void flagsElsewhere(platform::ModifierFlags flags) const {
        tellElsewhere({platform::event_mask::flagsChanged, flags});
    }
    void otherPressElsewhere() const { tellElsewhere({platform::event_mask::otherPress}); }

    /// A window of ours has the focus. Returns the event after all monitors; null if one consumed
    /// it.
    platform::EventPointer send(platform::Event event) const {
        auto current = std::make_shared<const platform::Event>(std::move(event));
        for (const auto& [mask, handler] : locals)
            if (current && (mask & current->kind))
                current = handler(current);
        return current;
    }
    platform::EventPointer flagsHere(platform::ModifierFlags flags) const {
        return send({platform::event_mask::flagsChanged, flags});
    }
    platform::EventPointer otherPressHere() const {
        return send({platform::event_mask::otherPress});
    }
    platform::EventPointer keyDown(platform::KeyCode code,
                                   std::shared_ptr<const platform::Window> window) const {
        return send({platform::event_mask::keyDown, 0, code, std::move(window)});
    }

    bool offersGlobal = true;
    bool offersLocal = true;
    std::vector<std::pair<platform::EventMask, GlobalHandler>> globals;
    std::vector<std::pair<platform::EventMask, LocalHandler>> locals;

private:
    void tellElsewhere(const platform::Event& event) const {
        for (const auto& [mask, handler] : globals)
            if (mask & event.kind)
                handler(event);
    }
};

} // namespace kelo::fakes
