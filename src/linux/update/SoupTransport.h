#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/http/TrustedAuthority.h"
#include "updater/archive/Transport.h"

#include <libsoup/soup.h>

#include <chrono>
#include <memory>

namespace kelo::update {

/// How long a transfer may wait for the next byte.
inline constexpr std::chrono::seconds transferPatience{60};

/// The updater's transfers with libsoup. Trusts the system's certificates and those of
/// the given authority. Must outlive its tasks.
class SoupTransport final : public updater::Transport {
public:
    explicit SoupTransport(std::shared_ptr<const http::TrustedAuthority> authority,
                           std::chrono::seconds patience = transferPatience);
    ~SoupTransport() override;

    Task<Bytes> fetch(Url url, std::size_t limit) override;
    Task<void> download(Url url, std::shared_ptr<updater::ByteSink> sink) override;

private:
    gobject::GObjectPointer<SoupSession> session;
    std::shared_ptr<const http::TrustedAuthority> authority;
    std::chrono::seconds patience;
};

} // namespace kelo::update
