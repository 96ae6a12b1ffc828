#pragma once

#include "platform/Bundle.h"

namespace kelo::fakes {

struct FakeBundle final : platform::Bundle {
    std::optional<platform::InformationDictionary> infoDictionary() override {
        ++reads;
        return dictionary;
    }
    std::optional<platform::InformationDictionary> dictionary;
    int reads = 0;
};

} // namespace kelo::fakes
