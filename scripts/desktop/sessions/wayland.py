# SPDX-License-Identifier: GPL-3.0-or-later
"""What all Wayland sessions have in common: a compositor without a screen, and hands for what needs a user."""
import os
import stat
import sys

from desktop.hands.keymap import Keymap
from desktop.services import Failure

_HANDS = os.path.join(os.path.dirname(os.path.dirname(os.path.realpath(__file__))), "hands", "serve.py")
_HANDED_ON = ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "SWAYSOCK", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP")


class WaylandSession:
    """A kind of session says its name, its compositor's process, and how that comes up."""
    name = ""
    current_desktop = ""
    ends_last = ()
    compositor_programs = {}
    runs_as_root = False  # sway refuses to, and no user's desktop does

    def __init__(self, options):
        self.options = options

    def programs(self):
        return {"Xwayland": "xwayland", **self.compositor_programs}

    def environment(self, folder):
        return {"LORVANE_SESSION": self.name, "XDG_SESSION_TYPE": "wayland", "XDG_CURRENT_DESKTOP": self.current_desktop,
                "LORVANE_HANDS": f"{folder}/run/lorvane-hands"}

    def bring_up(self, desktop):
        self._check_sockets_folder()
        self._check_layout()
        desktop.start_bus()
        # First, since the compositor asks for one, and then the bus would start another, which is locked.
        desktop.start_keyring()
        desktop.start_audio()
        self.prepare(desktop)
        self._compositor_up(desktop)
        desktop.hand_to_services(_HANDED_ON)
        desktop.start_accessibility(screen_reader=True)
        desktop.start("hands", [*self.hands(desktop), str(desktop.pid(self.ends_last[0]))])
        desktop.keyring_ready()
        desktop.audio_ready()
        desktop.wait("hands", "they listen", lambda: os.path.exists(desktop.environment["LORVANE_HANDS"]))

    def _compositor_up(self, desktop):
        """One of a great many starts of GNOME Shell hangs while it sets its renderer up, so there is a second try."""
        try:
            self.start_compositor(desktop)
            self.compositor_ready(desktop)
        except Failure as failure:
            print(f"virtual-desktop: starting it again: {failure}", file=sys.stderr, flush=True)
            desktop.end(self.ends_last[0])
            self.start_compositor(desktop)
            self.compositor_ready(desktop)

    def prepare(self, desktop):
        """Writes what the compositor reads at its start."""
        raise NotImplementedError

    def start_compositor(self, desktop):
        raise NotImplementedError

    def compositor_ready(self, desktop):
        """Returns when clients can connect and what tells them where is in the environment."""
        raise NotImplementedError

    @staticmethod
    def told(desktop):
        """The file into which the compositor's first client writes its environment."""
        return f"{desktop.folder}/run/session-environment"

    def teller(self, desktop):
        """A program that writes it."""
        script = f"{desktop.folder}/tell"
        told = self.told(desktop)
        with open(script, "w", encoding="utf-8") as file:
            file.write(f"#!/bin/sh\nenv -0 >'{told}.new' && mv '{told}.new' '{told}'\n")
        os.chmod(script, 0o700)
        return script

    def take_told(self, desktop, compositor, names):
        """Waits for that environment and takes these of its variables."""
        desktop.wait(compositor, "it has started its first client", lambda: os.path.exists(self.told(desktop)))
        with open(self.told(desktop), encoding="utf-8") as file:
            told = dict(entry.split("=", 1) for entry in file.read().split("\0") if "=" in entry)
        desktop.environment.update({name: told[name] for name in names if name in told})

    def _check_layout(self):
        try:
            Keymap(self.options.layout)
        except ValueError as error:
            raise Failure(str(error)) from error

    @staticmethod
    def _check_sockets_folder():
        folder = "/tmp/.X11-unix"
        if not os.path.isdir(folder) or not os.stat(folder).st_mode & stat.S_ISVTX:
            raise Failure(f"XWayland needs {folder}, which only root may make: mkdir -m 1777 {folder}")

    def hands(self, _desktop):
        """The command that serves as the user's hands."""
        return [sys.executable, "-I", _HANDS, self.name, self.options.layout]
