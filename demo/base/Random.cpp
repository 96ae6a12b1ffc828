#include "demo/base/Random.h"

#include "base/Base64.h"
#include "demo/base/ServiceError.h"

#include <openssl/rand.h>

namespace kelo::demo {

Bytes randomBytes(std::size_t count) {
    Bytes bytes(count);
    if (RAND_bytes(bytes.data(), static_cast<int>(count)) != 1)
        throw ServiceError("The system has no random numbers to give.");
    return bytes;
}

std::string randomToken() {
    return base64URLEncode(randomBytes(32));
}

} // namespace kelo::demo
