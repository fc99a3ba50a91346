# SPDX-License-Identifier: GPL-3.0-or-later
"""KWin alone, without the rest of Plasma: the global shortcut service is inside it."""
import os
import shutil

from desktop.hands.keymap import split
from desktop.sessions.wayland import WaylandSession

# What the hands may do and other clients may not.
_HANDS_ENTRY = """\
[Desktop Entry]
Type=Application
Name=Hands of the virtual desktop
Exec={binary}
NoDisplay=true
X-KDE-Wayland-Interfaces=org_kde_kwin_fake_input
X-KDE-DBUS-Restricted-Interfaces=org.kde.KWin.ScreenShot2
"""
_LAYOUT = """\
[Layout]
Use=true
LayoutList={layouts}
VariantList={variants}
"""
# Else the wallet's dialog for the first use comes up and takes the focus.
_WALLET = """\
[Wallet]
Enabled=false
First Use=false
"""


class Kwin(WaylandSession):
    name = "kwin"
    current_desktop = "KDE"
    ends_last = ("kwin_wayland", "Xwayland")
    compositor_programs = {"kwin_wayland": "kwin-wayland", "kbuildsycoca5": "libkf5service-bin"}
    socket = "wayland-1"

    def environment(self, folder):
        return {**super().environment(folder), "KDE_FULL_SESSION": "true", "KDE_SESSION_VERSION": "5",
                "WAYLAND_DISPLAY": self.socket}

    def prepare(self, desktop):
        self._write_settings(desktop)
        desktop.answer("kbuildsycoca5")
        # The packaged file has a capability that containers do not grant, and then it does not start; a copy has none.
        binary = self._binary(desktop)
        shutil.copyfile(shutil.which("kwin_wayland"), binary)
        os.chmod(binary, 0o700)
        # KWin goes by the path of a client's binary, so the hands get one that nobody else has.
        shutil.copyfile(os.path.realpath("/usr/bin/python3"), self._interpreter(desktop))
        os.chmod(self._interpreter(desktop), 0o700)

    def start_compositor(self, desktop):
        width, height = self.options.size.split("x")
        desktop.start("kwin_wayland", [self._binary(desktop), "--virtual", "--width", width, "--height", height,
                                       "--socket", self.socket, "--xwayland", "--no-lockscreen", self.teller(desktop)],
                      WAYLAND_DISPLAY=None, KWIN_COMPOSE="Q" if self.options.plain_drawing else None)

    @staticmethod
    def _binary(desktop):
        return f"{desktop.folder}/kwin_wayland"

    @staticmethod
    def _interpreter(desktop):
        return f"{desktop.folder}/python-of-hands"

    def hands(self, desktop):
        return [self._interpreter(desktop), *super().hands(desktop)[1:]]

    def _write_settings(self, desktop):
        applications = f"{desktop.environment['XDG_DATA_HOME']}/applications"
        os.makedirs(applications)
        with open(f"{applications}/lorvane-hands.desktop", "w", encoding="utf-8") as file:
            file.write(_HANDS_ENTRY.format(binary=self._interpreter(desktop)))
        layouts, variants = split(self.options.layout)
        with open(f"{desktop.environment['XDG_CONFIG_HOME']}/kxkbrc", "w", encoding="utf-8") as file:
            file.write(_LAYOUT.format(layouts=layouts, variants=variants))
        with open(f"{desktop.environment['XDG_CONFIG_HOME']}/kwalletrc", "w", encoding="utf-8") as file:
            file.write(_WALLET)

    def compositor_ready(self, desktop):
        self.take_told(desktop, "kwin_wayland", ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY"))
