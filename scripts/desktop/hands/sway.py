# SPDX-License-Identifier: GPL-3.0-or-later
"""Hands at sway: virtual devices, which are keyboards and mice like any other to it, and its command socket."""
import json
import os
import subprocess
import tempfile
import time

from desktop.hands import wire
from desktop.hands.keymap import Keymap

_LEFT_BUTTON = 0x110
_EVDEV = 8  # X counts keys from here


class Hands:
    def __init__(self, layout):
        self._keymap = Keymap(layout)
        self._compositor = wire.Connection()
        seat = self._compositor.bind("wl_seat")
        self._keyboard = self._device("zwp_virtual_keyboard_manager_v1", seat)
        self._pointer = self._device("zwlr_virtual_pointer_manager_v1", seat)
        text = self._keymap.text()
        with tempfile.TemporaryFile() as file:
            file.write(text)
            file.flush()
            self._compositor.request(self._keyboard, 0, wire.uint(1, len(text)), file.fileno())
            self._compositor.round_trip()

    def _device(self, manager, seat):
        bound = self._compositor.bind(manager)
        if bound is None:
            raise RuntimeError(f"the compositor has no {manager}")
        made = self._compositor.new_id()
        self._compositor.request(bound, 0, wire.uint(seat, made))
        return made

    @staticmethod
    def _now():
        return int(time.monotonic() * 1000) & 0xFFFFFFFF

    def key(self, key, down):
        self._compositor.request(self._keyboard, 1, wire.uint(self._now(), key - _EVDEV, int(down)))
        self._keymap.update(key, down)
        self._compositor.request(self._keyboard, 2, wire.uint(*self._keymap.modifiers()))
        self._compositor.round_trip()

    def point(self, x, y):
        screen = self._ask("get_outputs")[0]["rect"]
        self._compositor.request(self._pointer, 1, wire.uint(self._now(), x, y, screen["width"], screen["height"]))
        self._compositor.request(self._pointer, 4)
        self._compositor.round_trip()

    def button(self, down):
        self._compositor.request(self._pointer, 2, wire.uint(self._now(), _LEFT_BUTTON, int(down)))
        self._compositor.request(self._pointer, 4)
        self._compositor.round_trip()

    @staticmethod
    def _ask(what, *more):
        done = subprocess.run(["swaymsg", "--raw", "--type", what, *more], capture_output=True, text=True, check=True)
        return json.loads(done.stdout)

    def _command(self, text):
        answer = self._ask("command", text)
        if not all(one["success"] for one in answer):
            raise RuntimeError(f"sway refuses '{text}': {answer}")

    def windows(self):
        found = []
        waiting = [self._ask("get_tree")]
        while waiting:
            node = waiting.pop()
            waiting += node["nodes"] + node["floating_nodes"]
            if node.get("pid"):
                found.append({
                    "id": node["id"], "pid": node["pid"], "title": node["name"] or "",
                    "class": node["app_id"] or node["window_properties"].get("class", ""),
                    "active": node["focused"], "fullscreen": node["fullscreen_mode"] != 0})
        return found

    def activate(self, window):
        self._command(f"[con_id={window}] focus")

    def close(self, window):
        self._command(f"[con_id={window}] kill")

    def fullscreen(self, window, wanted):
        self._command(f"[con_id={window}] fullscreen {'enable' if wanted else 'disable'}")

    @staticmethod
    def picture(path):
        subprocess.run(["grim", path], check=True, cwd=os.environ["LORVANE_DESKTOP"])
