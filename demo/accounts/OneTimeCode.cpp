#include "demo/accounts/OneTimeCode.h"

#include "demo/base/Digest.h"

#include <openssl/hmac.h>

#include <array>
#include <utility>

namespace kelo::demo {
namespace {

std::int64_t stepAt(OneTimeCode::Time now) {
    return std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch()).count() / 30;
}

} // namespace

OneTimeCode::OneTimeCode(Bytes secret) : secret(std::move(secret)) {}

std::string OneTimeCode::current(Time now) const {
    return codeAt(stepAt(now));
}

bool OneTimeCode::accept(std::string_view code, Time now) {
    const std::int64_t present = stepAt(now);
    for (const std::int64_t step : {present - 1, present}) {
        if (step <= lastAccepted || !equalInConstantTime(codeAt(step), code))
            continue;
        lastAccepted = step;
        return true;
    }
    return false;
}

std::string OneTimeCode::codeAt(std::int64_t step) const {
    std::array<unsigned char, 8> counter{};
    for (std::size_t index = 0; index < counter.size(); ++index)
        counter[counter.size() - 1 - index] = static_cast<unsigned char>(step >> (8 * index));

    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    HMAC(EVP_sha1(), secret.data(), static_cast<int>(secret.size()), counter.data(), counter.size(),
         digest.data(), &size);
    const std::size_t offset = digest[size - 1] & 0x0f;
    std::uint32_t number = 0;
    for (std::size_t index = 0; index < 4; ++index)
        number = number << 8 | digest[offset + index];
    const std::string digits = std::to_string((number & 0x7fffffff) % 1'000'000);
    return std::string(6 - digits.size(), '0') + digits;
}

} // namespace kelo::demo
