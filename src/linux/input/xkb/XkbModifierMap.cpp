#include "linux/input/xkb/XkbModifierMap.h"

#include <X11/XKBlib.h>
#include <X11/keysym.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <span>

namespace kelo::input {

namespace {

namespace modifier = platform::modifier;

struct FreeKeyboard {
    void operator()(XkbDescPtr keyboard) const { XkbFreeKeyboard(keyboard, 0, True); }
};
using Keyboard = std::unique_ptr<XkbDescRec, FreeKeyboard>;

/// The modifiers of all keys that carry one of these symbols.
unsigned modifiersOf(const XkbDescRec& keyboard, std::initializer_list<KeySym> symbols) {
    unsigned found = 0;
    for (int key = keyboard.min_key_code; key <= keyboard.max_key_code; ++key) {
        const std::span<const KeySym> on(XkbKeySymsPtr(&keyboard, key),
                                         static_cast<std::size_t>(XkbKeyNumSyms(&keyboard, key)));
        const bool carries = std::ranges::any_of(
            on, [symbols](KeySym each) { return std::ranges::count(symbols, each) > 0; });
        if (carries)
            found |= keyboard.map->modmap[key];
    }
    return found;
}

} // namespace

platform::ModifierFlags XkbModifierMap::flags(unsigned realModifiers) const {
    platform::ModifierFlags flags = 0;
    if (realModifiers & LockMask)
        flags |= modifier::capsLock;
    if (realModifiers & ShiftMask)
        flags |= modifier::shift;
    if (realModifiers & ControlMask)
        flags |= modifier::control;
    if (realModifiers & option)
        flags |= modifier::option;
    if (realModifiers & command)
        flags |= modifier::command;
    return flags;
}

XkbModifierMap readXkbModifierMap(_XDisplay* display) {
    const Keyboard keyboard(XkbGetMap(display, XkbAllClientInfoMask, XkbUseCoreKbd));
    if (!keyboard || !keyboard->map || !keyboard->map->modmap || !keyboard->map->key_sym_map)
        return {Mod1Mask, Mod4Mask};
    // On some layouts, one key carries both Alt and another symbol. Its modifier then does not mean
    // Alt.
    const unsigned others = ShiftMask | LockMask | ControlMask |
                            modifiersOf(*keyboard, {XK_ISO_Level3_Shift, XK_ISO_Level5_Shift,
                                                    XK_Mode_switch, XK_Num_Lock});
    XkbModifierMap map;
    map.option = modifiersOf(*keyboard, {XK_Alt_L, XK_Alt_R}) & ~others;
    // Meta often shares its modifier with Alt. The two cannot be told apart then.
    map.command = modifiersOf(*keyboard, {XK_Super_L, XK_Super_R, XK_Meta_L, XK_Meta_R}) & ~others &
                  ~map.option;
    return map;
}

} // namespace kelo::input
