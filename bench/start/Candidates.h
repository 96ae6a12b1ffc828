#pragma once

#include "common/Results.h"
#include "start/Candidate.h"

#include <filesystem>
#include <vector>

namespace kelo::bench {

inline constexpr const char* measuredPage = "https://localhost:8443";

/// Kelo first, then two floors (a bare window and a bare web view), and every browser of those we
/// know that is installed; each with what it takes to trust the authority. Notes how, and who is
/// left out. folder: for what this needs.
std::vector<Candidate> candidates(const std::filesystem::path& build,
                                  const std::filesystem::path& authority,
                                  const std::filesystem::path& folder, Results& results);

} // namespace kelo::bench
