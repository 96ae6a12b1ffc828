#pragma once

#include "linux/gobject/GLibHandles.h"

#include <map>
#include <string>
#include <string_view>

namespace kelo::fuzz {

/// A tuple of D-Bus values, as the text describes them. No text is refused: what means nothing is
/// left out.
///
///   u7 i-1 t5 x1 y2 b1 d1.5   numbers by their type's letter
///   stext o/path              strings and object paths
///   ( ) { } < > [ ]           tuples, dictionaries (a key, then a value), variants, lists of
///   strings $x                        stands for a text in `names`, within a string or path
gobject::GVariantPointer busValue(std::string_view text, const std::map<char, std::string>& names);

} // namespace kelo::fuzz
