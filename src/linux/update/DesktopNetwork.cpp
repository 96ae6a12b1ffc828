#include "linux/update/DesktopNetwork.h"

#include <utility>

namespace kelo::update {

DesktopNetwork::DesktopNetwork(GNetworkMonitor* monitor)
    : monitor(monitor),
      wasAvailable(g_network_monitor_get_network_available(monitor)),
      connection(
          gobject::connectSignal(monitor, "network-changed", &DesktopNetwork::changed, this)) {}

bool DesktopNetwork::isMetered() const {
    return g_network_monitor_get_network_metered(monitor);
}

// The signal also tells of every address that comes or goes.
void DesktopNetwork::changed(GNetworkMonitor*, gboolean available, DesktopNetwork* network) {
    const bool was = std::exchange(network->wasAvailable, available);
    if (available && !was && network->action)
        network->action();
}

} // namespace kelo::update
