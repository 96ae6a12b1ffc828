#pragma once

namespace kelo::gtk {

/// Gives the entries of every menu of this process that opens from now on their texts as their
/// accessible names: the program's menus, the pages', and those of entries. Without it, a screen
/// reader has nothing to say about an entry in GTK 4.18.
void nameEntriesOfMenus();

} // namespace kelo::gtk
