# SPDX-License-Identifier: GPL-3.0-or-later
"""Keyboard maps and their state by libxkbcommon."""
import ctypes
import re

_TEXT_V1 = 1
_DEPRESSED, _LATCHED, _LOCKED, _LAYOUT_EFFECTIVE = 1, 2, 4, 128


class _Names(ctypes.Structure):
    _fields_ = [(name, ctypes.c_char_p) for name in ("rules", "model", "layout", "variant", "options")]


def split(layout):
    """'us,ru(phonetic)' as the layouts and their variants: 'us,ru' and ',phonetic'."""
    parts = [re.fullmatch(r"(\w+)(?:\((.*)\))?", part) for part in layout.split(",")]
    if not all(parts):
        raise ValueError(f"not a keyboard layout: {layout}")
    return ",".join(part[1] for part in parts), ",".join(part[2] or "" for part in parts)


class Keymap:
    """The map of a layout, and what the keys that are down make of it. Key codes are X's (evdev + 8)."""

    def __init__(self, layout):
        self._xkb = ctypes.CDLL("libxkbcommon.so.0")
        for function in ("xkb_context_new", "xkb_keymap_new_from_names", "xkb_keymap_get_as_string", "xkb_state_new"):
            getattr(self._xkb, function).restype = ctypes.c_void_p
        context = ctypes.c_void_p(self._xkb.xkb_context_new(0))
        layouts, variants = split(layout)
        names = _Names(None, None, layouts.encode(), variants.encode(), None)
        keymap = self._xkb.xkb_keymap_new_from_names(context, ctypes.byref(names), 0)
        if not keymap:
            raise ValueError(f"there is no keyboard layout {layout}")
        self._keymap = ctypes.c_void_p(keymap)
        self._state = ctypes.c_void_p(self._xkb.xkb_state_new(self._keymap))

    def text(self):
        return ctypes.string_at(self._xkb.xkb_keymap_get_as_string(self._keymap, _TEXT_V1)) + b"\0"

    def update(self, key, down):
        self._xkb.xkb_state_update_key(self._state, key, int(down))

    def modifiers(self):
        """Depressed, latched and locked ones and the layout, as the protocol wants them."""
        masks = [self._xkb.xkb_state_serialize_mods(self._state, part) for part in (_DEPRESSED, _LATCHED, _LOCKED)]
        return *masks, self._xkb.xkb_state_serialize_layout(self._state, _LAYOUT_EFFECTIVE)
