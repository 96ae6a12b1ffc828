#pragma once

#include <functional>

struct _GSource;

namespace kelo::input {

/// Calls a function in the main loop whenever a descriptor can be read, has ended or has failed,
/// until it goes. The function may let it go. It does not own the descriptor. Main thread only.
class DescriptorWatch {
public:
    DescriptorWatch(int descriptor, std::function<void()> ready);
    ~DescriptorWatch();
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;

private:
    _GSource* source;
};

} // namespace kelo::input
