#pragma once

#include "linux/glib/GObjectPointer.h"
#include "linux/http/TrustedAuthority.h"
#include "updater/Transport.h"

#include <libsoup/soup.h>

#include <chrono>
#include <memory>

namespace kelo::desktop {

/// How long a transfer may go without a byte.
inline constexpr std::chrono::seconds transferPatience{60};

/// The updater's transfers on libsoup, with the certificates that hold for every other request of
/// the program. Outlives its tasks.
class SoupTransport final : public updater::Transport {
public:
    explicit SoupTransport(std::shared_ptr<const TrustedAuthority> authority,
                           std::chrono::seconds patience = transferPatience);
    ~SoupTransport() override;

    platform::Task<platform::Bytes> fetch(platform::Url url, std::size_t limit) override;
    platform::Task<void> download(platform::Url url,
                                  std::shared_ptr<updater::ByteSink> sink) override;

private:
    GObjectPointer<SoupSession> session;
    std::shared_ptr<const TrustedAuthority> authority;
    std::chrono::seconds patience;
};

} // namespace kelo::desktop
