# SPDX-License-Identifier: GPL-3.0-or-later
"""An X server with a window manager."""
import os
import subprocess

from desktop.services import Failure

WINDOW_MANAGERS = {
    "openbox": (["openbox", "--sm-disable"], "openbox"),
    "xfwm4": (["xfwm4", "--sm-client-disable"], "xfwm4"),
    "xfwm4_plain": (["xfwm4", "--sm-client-disable", "--compositor=off"], "xfwm4"),  # without its compositor
    "kwin_x11": (["kwin_x11"], "kwin-x11"),
}


class X11:
    ends_last = ("Xvfb",)  # after its clients, so that none dies of a lost display
    runs_as_root = True

    def __init__(self, options):
        self._options = options
        self._window_manager, self._package = WINDOW_MANAGERS[options.wm]

    def programs(self):
        return {"Xvfb": "xvfb", "setxkbmap": "x11-xkb-utils", "xprop": "x11-utils",
                self._window_manager[0]: self._package}

    def environment(self, _folder):
        return {"LORVANE_SESSION": "x11", "XDG_SESSION_TYPE": "x11"}

    def bring_up(self, desktop):
        """Parts that do not need each other come up at the same time."""
        display = self._start_display(desktop)
        desktop.start_audio()
        desktop.environment["DISPLAY"] = ":" + desktop.read_line("Xvfb", display)
        self._set_layout(desktop)
        desktop.start_bus()
        desktop.start(self._options.wm, self._window_manager)
        desktop.start_keyring()
        desktop.start_accessibility()
        desktop.keyring_ready()
        desktop.audio_ready()
        self._window_manager_ready(desktop)

    def _start_display(self, desktop):
        mine, theirs = os.pipe()
        desktop.start("Xvfb", ["Xvfb", "-displayfd", str(theirs), "-screen", "0", f"{self._options.size}x24",
                               "-nolisten", "tcp", "-noreset", "+extension", "RANDR"], pass_fds=[theirs])
        os.close(theirs)
        return mine

    def _set_layout(self, desktop):
        if self._options.layout == "us":
            return
        set_layout = subprocess.run(["setxkbmap", "-layout", self._options.layout], env=desktop.environment,
                                    check=False, capture_output=True, text=True)
        if set_layout.returncode != 0:
            raise Failure(f"the keyboard layout {self._options.layout} cannot be set: {set_layout.stderr.strip()}")

    def _window_manager_ready(self, desktop):
        def managed():
            answer = desktop.answer("xprop", "-root", "-notype", "_NET_SUPPORTING_WM_CHECK")
            window = answer.partition("window id # ")[2].strip()
            return window and "_NET_WM_NAME" in desktop.answer("xprop", "-id", window, "-notype", "_NET_WM_NAME")
        desktop.wait(self._options.wm, "it has set _NET_SUPPORTING_WM_CHECK", managed)
