#pragma once

namespace kelo::posix {

/// While one exists, other programs of the same user can neither read this process's memory nor
/// attach a debugger, and a crash leaves no core file. The first one begins it, the last one ends
/// it and restores what was before. Main thread only.
///
/// Meanwhile the files in /proc/self belong to root: programs that look there to find out who calls
/// them are refused. Programs that this process starts are not affected, except that they inherit
/// the limit on core files.
class MemoryShield {
public:
    MemoryShield();
    ~MemoryShield();
    MemoryShield(const MemoryShield&) = delete;
    MemoryShield& operator=(const MemoryShield&) = delete;
};

} // namespace kelo::posix
