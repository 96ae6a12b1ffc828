#pragma once

namespace kelo {

/// What the keyring asks of the part of a desktop that shows its prompts, as introspection data.
inline constexpr const char* prompterInterface =
    "<node><interface name='org.gnome.keyring.internal.Prompter'>"
    "<method name='BeginPrompting'>"
    "<arg name='callback' type='o' direction='in'/></method>"
    "<method name='PerformPrompt'>"
    "<arg name='callback' type='o' direction='in'/>"
    "<arg name='type' type='s' direction='in'/>"
    "<arg name='properties' type='a{sv}' direction='in'/>"
    "<arg name='exchange' type='s' direction='in'/></method>"
    "<method name='StopPrompting'>"
    "<arg name='callback' type='o' direction='in'/></method>"
    "</interface></node>";

} // namespace kelo
