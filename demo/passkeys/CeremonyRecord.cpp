#include "demo/passkeys/CeremonyRecord.h"

#include "base/Base64.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <iostream>

namespace kelo::demo {

void CeremonyRecord::add(const std::string& ceremony, const std::string& origin, ByteView challenge,
                         const nlohmann::json& credential) const {
    if (!file)
        return;
    const nlohmann::json line = {{"ceremony", ceremony},
                                 {"origin", origin},
                                 {"challenge", base64URLEncode(challenge)},
                                 {"credential", credential}};
    std::ofstream record(*file, std::ios::app);
    record << line.dump() << std::endl;
    if (!record)
        std::cerr << "kelo-demo-service: A ceremony could not be written to " << file->string()
                  << ".\n";
}

} // namespace kelo::demo
