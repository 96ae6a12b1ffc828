#pragma once

#include "linux/gobject/SignalHandler.h"
#include "updater/archive/Network.h"

#include <gio/gio.h>

namespace kelo::update {

/// The network as the desktop's network manager or its portal knows it. Where neither is there, no
/// network is metered, and the kernel's routes tell whether there is one.
class DesktopNetwork final : public updater::Network {
public:
    /// The monitor must outlive it.
    explicit DesktopNetwork(GNetworkMonitor* monitor = g_network_monitor_get_default());

    bool isMetered() const override;
    void whenAvailable(std::function<void()> changed) override { action = std::move(changed); }

private:
    static void changed(GNetworkMonitor* monitor, gboolean available, DesktopNetwork* network);

    GNetworkMonitor* monitor;
    bool wasAvailable;
    std::function<void()> action;
    gobject::SignalConnection connection;
};

} // namespace kelo::update
