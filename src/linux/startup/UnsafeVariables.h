#pragma once

#include <span>

namespace kelo::startup {

/// Removes the environment variables that would open this program to others, so that neither this
/// process nor one that it starts sees them. Before the first thread. ProcessStart calls it.
///
/// It guards against a variable that was left behind or slipped in. It does not stop a program of
/// the same user, which can load its own code (LD_PRELOAD) before main() begins.
void unsetUnsafeVariables();

/// Their names. A name that ends in "*" stands for all names that begin like it.
std::span<const char* const> unsafeVariables();

} // namespace kelo::startup
