#pragma once

#include "base/Bytes.h"
#include "base/Url.h"
#include "base/async/Task.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kelo::updater {

/// Receives the bytes of a download, in order.
class ByteSink {
public:
    virtual ~ByteSink() = default;
    /// Called before the first portion if the server announces the total length.
    virtual void announce(std::uint64_t length) = 0;
    /// The next portion follows when the task has ended. An exception ends the download.
    virtual Task<void> take(Bytes portion) = 0;
};

/// Fetches over https and follows at most five redirects. Throws a Failure or an UpdateError with a
/// description for the screen: no connection, an invalid certificate, nothing received for a
/// minute, a truncated response, any status but 200. Dropping a task ends its transfer. Main thread
/// only.
class Transport {
public:
    virtual ~Transport() = default;
    /// Gives the whole body; fails if it is longer than the limit, in bytes.
    virtual Task<Bytes> fetch(Url url, std::size_t limit) = 0;
    virtual Task<void> download(Url url, std::shared_ptr<ByteSink> sink) = 0;
};

} // namespace kelo::updater
