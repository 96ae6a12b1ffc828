#pragma once

#include "base/Url.h"
#include "base/async/Task.h"
#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <string>

namespace kelo::http {

/// The host and port of a proxy's address. Leaves out the user and the password that the address
/// may contain. Empty for a text that is no address.
std::string proxyName(const char* address);

/// The proxy that a connection goes to, as proxyName() puts it; empty if it goes to the server.
std::string proxyBehind(GIOStream* connection);

/// The proxy that the resolver names first for the URL; empty if that is none. A null resolver
/// stands for the desktop's. The cancellable must outlive the task.
Task<std::string> proxyFor(gobject::GObjectPointer<GProxyResolver> resolver, Url url,
                           GCancellable* cancellable);

} // namespace kelo::http
