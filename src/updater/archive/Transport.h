#pragma once

#include "base/Bytes.h"
#include "base/Url.h"
#include "base/async/Task.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kelo::updater {

/// Takes the bytes of a download, in order.
class ByteSink {
public:
    virtual ~ByteSink() = default;
    /// The length that the server announces for the whole, if it does; before the first portion.
    virtual void announce(std::uint64_t length) = 0;
    /// The next portion comes when this has ended. A failure ends the download.
    virtual Task<void> take(Bytes portion) = 0;
};

/// Fetches over https, redirects (at most five) included. A failure is a Failure or an
/// UpdateError with a sentence for the screen: no connection, a certificate that does not hold,
/// nothing received for a minute, a reply that is cut short, any status but 200. Dropping a task
/// ends its transfer. Main thread only.
class Transport {
public:
    virtual ~Transport() = default;
    /// The whole body; fails for one that is longer than the limit.
    virtual Task<Bytes> fetch(Url url, std::size_t limit) = 0;
    virtual Task<void> download(Url url, std::shared_ptr<ByteSink> sink) = 0;
};

} // namespace kelo::updater
