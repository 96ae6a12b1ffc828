#include "linux/input/xkb/XkbModifierMap.h"

#include <X11/XKBlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <algorithm>
#include <array>
#include <memory>
#include <span>

namespace kelo::input {

namespace {

namespace modifier = platform::modifier;

struct FreeKeyboard {
    void operator()(XkbDescPtr keyboard) const { XkbFreeKeyboard(keyboard, 0, True); }
};
using Keyboard = std::unique_ptr<XkbDescRec, FreeKeyboard>;

constexpr std::array<KeySym, 2> altSymbols{XK_Alt_L, XK_Alt_R};
constexpr std::array<KeySym, 4> superSymbols{XK_Super_L, XK_Super_R, XK_Meta_L, XK_Meta_R};
constexpr std::array<KeySym, 4> levelSymbols{XK_ISO_Level3_Shift, XK_ISO_Level5_Shift,
                                             XK_Mode_switch, XK_Num_Lock};

/// The symbols of a key in all groups and on all levels.
std::span<const KeySym> symbolsOf(const XkbDescRec& keyboard, int key) {
    return {XkbKeySymsPtr(&keyboard, key), static_cast<std::size_t>(XkbKeyNumSyms(&keyboard, key))};
}

bool carries(const XkbDescRec& keyboard, int key, std::span<const KeySym> symbols) {
    const auto on = symbolsOf(keyboard, key);
    return std::ranges::find_first_of(on, symbols) != on.end();
}

/// AltGr may set its modifier without being bound to it, so its symbol counts, too.
bool isModifier(const XkbDescRec& keyboard, int key) {
    return keyboard.map->modmap[key] != 0 ||
           std::ranges::any_of(symbolsOf(keyboard, key),
                               [](KeySym symbol) { return IsModifierKey(symbol); });
}

/// The modifiers of all keys for which this holds.
template <typename Holds>
unsigned modifiersOf(const XkbDescRec& keyboard, Holds holds) {
    unsigned found = 0;
    for (int key = keyboard.min_key_code; key <= keyboard.max_key_code; ++key)
        if (holds(key))
            found |= keyboard.map->modmap[key];
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

bool XkbModifierMap::isModifierKey(int code) const {
    return code >= 0 && static_cast<std::size_t>(code) < modifierKeys.size() &&
           modifierKeys.test(static_cast<std::size_t>(code));
}

XkbModifierMap readXkbModifierMap(_XDisplay* display) {
    const Keyboard keyboard(XkbGetMap(display, XkbAllClientInfoMask, XkbUseCoreKbd));
    if (!keyboard || !keyboard->map || !keyboard->map->modmap || !keyboard->map->key_sym_map)
        // If it is unknown which keys are modifiers, no key may drop a press.
        return {Mod1Mask, Mod4Mask, std::bitset<256>().set()};
    const auto has = [&](int key, std::span<const KeySym> symbols) {
        return carries(*keyboard, key, symbols);
    };
    // An Alt key may share its modifier with AltGr or Num Lock. Option would then seem to be down
    // when it is not. With two layouts, the right Alt key is often Alt in one and AltGr in the
    // other. Such a key sets Alt's modifier as Alt and another one as AltGr, so it takes nothing
    // away from Option.
    const unsigned others =
        ShiftMask | LockMask | ControlMask | modifiersOf(*keyboard, [&](int key) {
            return has(key, levelSymbols) && !has(key, altSymbols);
        });
    XkbModifierMap map;
    map.option = modifiersOf(*keyboard, [&](int key) { return has(key, altSymbols); }) & ~others;
    // Meta often shares its modifier with Alt. The two cannot be told apart then.
    map.command = modifiersOf(*keyboard, [&](int key) { return has(key, superSymbols); }) &
                  ~others & ~map.option;
    for (int key = keyboard->min_key_code; key <= keyboard->max_key_code; ++key)
        map.modifierKeys.set(static_cast<std::size_t>(key), isModifier(*keyboard, key));
    return map;
}

} // namespace kelo::input
