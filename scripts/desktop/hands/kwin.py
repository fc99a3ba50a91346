# SPDX-License-Identifier: GPL-3.0-or-later
"""Hands at KWin: its fake input and pictures, which a desktop entry opens for the binary that runs this, and scripts."""
import json
import os
import subprocess
import tempfile
import threading

from gi.repository import Gio, GLib

from desktop.hands import wire
from desktop.hands.bus import Service

_LEFT_BUTTON = 0x110
_EVDEV = 8  # X counts keys from here
_BOUND = 10  # seconds
_PATH = "/com/ostrand/tirra/hands"
_INTERFACE = "com.ostrand.tirra.Hands"
_EAR = f"""
    <node><interface name="{_INTERFACE}"><method name="Tell"><arg type="s" direction="in"/></method></interface></node>"""
_LIST = """workspace.clientList().filter(w => w.normalWindow || w.dialog).map(w => ({
    id: String(w.internalId), pid: w.pid, title: w.caption, "class": String(w.resourceClass), active: w.active,
    fullscreen: w.fullScreen}))"""
_WINDOW = "workspace.clientList().filter(w => String(w.internalId) === {id})[0]"


class Hands:
    def __init__(self, _layout):
        self._compositor = wire.Connection()
        self._input = self._compositor.bind("org_kde_kwin_fake_input", 4)
        if self._input is None:
            raise RuntimeError("the compositor shows us no org_kde_kwin_fake_input")
        self._compositor.request(self._input, 0, wire.string("hands") + wire.string("the virtual desktop"))
        self._compositor.round_trip()
        self._kwin = Service("org.kde.KWin")
        self._seen = []  # KWin names windows by long texts; a window's number is its place here
        self._told = None
        self._heard = threading.Event()
        self._listen()

    def _listen(self):
        """A script answers by calling us."""
        def called(_connection, _sender, _path, _interface, _method, arguments, invocation):
            self._told = arguments.unpack()[0]
            invocation.return_value(None)
            self._heard.set()
        ear = Gio.DBusNodeInfo.new_for_xml(_EAR).interfaces[0]
        self._kwin.connection.register_object(_PATH, ear, called, None, None)
        threading.Thread(target=GLib.MainLoop().run, daemon=True).start()

    def key(self, key, down):
        self._compositor.request(self._input, 10, wire.uint(key - _EVDEV, int(down)))
        self._compositor.round_trip()

    def point(self, x, y):
        self._compositor.request(self._input, 9, wire.fixed(x, y))
        self._compositor.round_trip()

    def button(self, down):
        self._compositor.request(self._input, 2, wire.uint(_LEFT_BUTTON, int(down)))
        self._compositor.round_trip()

    def _run(self, expression):
        """What the expression is inside KWin."""
        me = json.dumps(self._kwin.connection.get_unique_name())
        with tempfile.NamedTemporaryFile("w", suffix=".js", encoding="utf-8") as file:
            file.write(f"callDBus({me}, '{_PATH}', '{_INTERFACE}', 'Tell', JSON.stringify({expression}) || 'null');\n")
            file.flush()
            number, = self._kwin.call("/Scripting", "org.kde.kwin.Scripting", "loadScript", "(s)", file.name)
            self._heard.clear()
            try:
                self._kwin.call(f"/{number}", "org.kde.kwin.Script", "run")
                if not self._heard.wait(_BOUND):
                    raise RuntimeError(f"KWin did not run: {expression}")
            finally:
                self._kwin.call("/Scripting", "org.kde.kwin.Scripting", "unloadScript", "(s)", file.name)
        return json.loads(self._told)

    def windows(self):
        listed = self._run(_LIST)
        for window in listed:
            if window["id"] not in self._seen:
                self._seen.append(window["id"])
            window["id"] = self._seen.index(window["id"]) + 1
        return listed

    def _with_window(self, window, statement):
        found = _WINDOW.format(id=json.dumps(self._seen[window - 1]))
        if not self._run(f"(w => {{ if (!w) return false; {statement}; return true; }})({found})"):
            raise RuntimeError(f"there is no window {window}")

    def activate(self, window):
        self._with_window(window, "workspace.activeClient = w")

    def close(self, window):
        self._with_window(window, "w.closeWindow()")

    def fullscreen(self, window, wanted):
        self._with_window(window, f"w.fullScreen = {json.dumps(bool(wanted))}")

    def picture(self, path):
        mine, theirs = os.pipe()
        with os.fdopen(mine, "rb") as pipe:
            pixels = []
            reader = threading.Thread(target=lambda: pixels.append(pipe.read()))
            reader.start()
            try:
                form, = self._kwin.call_with_descriptor(
                    theirs, "/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2", "CaptureWorkspace", "(a{sv}h)",
                    {"include-cursor": GLib.Variant("b", True)}, 0)
            finally:
                os.close(theirs)
                reader.join()
        subprocess.run(["convert", "-size", f"{form['width']}x{form['height']}", "-depth", "8", "bgra:-", "-alpha",
                        "off", f"png:{path}"], input=pixels[0], check=True)
