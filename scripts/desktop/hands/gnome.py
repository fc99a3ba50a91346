# SPDX-License-Identifier: GPL-3.0-or-later
"""Hands at GNOME Shell: virtual devices made inside it, since its unsafe mode evaluates what it is given."""
import json
import os
import shutil
import time

from desktop.hands.bus import Service

_LEFT_BUTTON = 1
_ENABLED = 1
_BOUND = 10  # seconds
_EVDEV = 8  # X counts keys from here
_DEVICES = """
    const {Clutter} = imports.gi;
    const seat = Clutter.get_default_backend().get_default_seat();
    global.hands = {
        Clutter: Clutter,
        keyboard: seat.create_virtual_device(Clutter.InputDeviceType.KEYBOARD_DEVICE),
        mouse: seat.create_virtual_device(Clutter.InputDeviceType.POINTER_DEVICE),
        windows: () => global.get_window_actors().map(actor => actor.meta_window)
            .filter(w => !w.is_override_redirect() && !w.skip_taskbar),
        window: id => global.hands.windows().filter(w => w.get_id() === id)[0],
    };
    true"""
# As at a login after it was installed.
_EXTENSION = """(async () => {{
    const folder = imports.gi.Gio.File.new_for_path({folder});
    const extension = Main.extensionManager.createExtensionObject({uuid}, folder, 2);
    await Main.extensionManager.loadExtension(extension);
    Main.extensionManager.enableExtension({uuid});
}})(); true"""
_LIST = """global.hands.windows().map(w => ({
    id: w.get_id(), pid: w.get_pid(), title: w.get_title() || '', "class": w.get_wm_class() || '',
    active: w.has_focus(), fullscreen: w.is_fullscreen()}))"""


class Hands:
    def __init__(self, _layout):
        self._shell = Service("org.gnome.Shell")
        self._evaluate(_DEVICES)

    def _evaluate(self, code):
        done, answer = self._shell.call("/org/gnome/Shell", "org.gnome.Shell", "Eval", "(s)", code)
        if not done:
            raise RuntimeError(f"the shell does not do: {code}\n{answer}")
        return json.loads(answer) if answer else None

    def _post(self, device, event, state, code, down):
        held = f"global.hands.Clutter.{state}.{'PRESSED' if down else 'RELEASED'}"
        self._evaluate(f"global.hands.{device}.{event}(imports.gi.GLib.get_monotonic_time(), {code}, {held}); true")

    def key(self, key, down):
        self._post("keyboard", "notify_key", "KeyState", key - _EVDEV, down)

    def point(self, x, y):
        self._evaluate("global.hands.mouse.notify_absolute_motion(imports.gi.GLib.get_monotonic_time(), "
                       f"{x}, {y}); true")

    def button(self, down):
        self._post("mouse", "notify_button", "ButtonState", _LEFT_BUTTON, down)

    def windows(self):
        return self._evaluate(_LIST)

    def _with_window(self, window, statement):
        found = f"global.hands.window({json.dumps(window)})"
        if not self._evaluate(f"(w => {{ if (!w) return false; {statement}; return true; }})({found})"):
            raise RuntimeError(f"there is no window {window}")

    def activate(self, window):
        self._with_window(window, "w.activate(global.get_current_time())")

    def close(self, window):
        self._with_window(window, "w.delete(global.get_current_time())")

    def fullscreen(self, window, wanted):
        self._with_window(window, "w.make_fullscreen()" if wanted else "w.unmake_fullscreen()")

    def clipboard(self):
        return self._evaluate("global.display.get_selection().get_mimetypes("
                              "imports.gi.Meta.SelectionType.SELECTION_CLIPBOARD) || []")

    def picture(self, path):
        taken, _where = self._shell.call("/org/gnome/Shell/Screenshot", "org.gnome.Shell.Screenshot", "Screenshot",
                                         "(bbs)", True, False, path)
        if not taken:
            raise RuntimeError(f"the shell takes no picture to {path}")

    def extension(self, folder):
        with open(f"{folder}/metadata.json", encoding="utf-8") as file:
            uuid = json.load(file)["uuid"]
        # The shell finds its code by the folder's name.
        installed = f"{os.environ['XDG_DATA_HOME']}/gnome-shell/extensions/{uuid}"
        shutil.copytree(folder, installed, dirs_exist_ok=True)
        self._evaluate(_EXTENSION.format(folder=json.dumps(installed), uuid=json.dumps(uuid)))
        state = f"(Main.extensionManager.lookup({json.dumps(uuid)}) || {{state: 0}}).state"
        end = time.monotonic() + _BOUND
        while self._evaluate(state) != _ENABLED:
            if time.monotonic() > end:
                raise RuntimeError(f"the shell does not switch {uuid} on: it is in state {self._evaluate(state)}")
            time.sleep(0.02)
