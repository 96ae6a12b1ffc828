#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "testing/TemporaryFolder.h"

#include <gio/gio.h>

#include <string>

namespace kelo::tests {

/// A TPM that is a program (swtpm), with a state and sockets of its own. It has no resource
/// manager: what a program leaves in its memory stays there, and one program at a time can use it.
class SimulatedChip {
public:
    /// Starts it with a seed of its own.
    SimulatedChip() { powerOn(); }
    ~SimulatedChip();
    SimulatedChip(const SimulatedChip&) = delete;
    SimulatedChip& operator=(const SimulatedChip&) = delete;

    /// As the library's loader names it.
    std::string transport() const { return "swtpm:path=" + socket(); }
    /// The same, and every byte to and from the chip is written into the file that the environment
    /// variable TCTI_PCAP_FILE names.
    std::string recordedTransport() const { return "pcap:" + transport(); }

    /// As a user clears it in the settings of the firmware: all that it has made is lost.
    void clear() const;
    /// What the kernel does for a program that has ended: flushes what it has left in the memory.
    void forgetLeftovers() const;
    /// Ends it in the middle of whatever it does.
    void cutPower();
    /// Starts it again after cutPower().
    void powerOn();

private:
    std::string socket() const { return (folder / "chip").string(); }

    test::TemporaryFolder folder;
    gobject::GObjectPointer<GSubprocess> process;
};

} // namespace kelo::tests
