# SPDX-License-Identifier: GPL-3.0-or-later
"""sway: a compositor of the wlroots family."""
from desktop.sessions.wayland import WaylandSession


class Sway(WaylandSession):
    name = "sway"
    current_desktop = "sway"
    ends_last = ("sway", "Xwayland")
    compositor_programs = {"sway": "sway", "swaymsg": "sway", "grim": "grim"}

    def prepare(self, desktop):
        with open(self._settings(desktop), "w", encoding="utf-8") as file:
            file.write(f"output * resolution {self.options.size}\n"
                       "focus_follows_mouse no\n"
                       f"xwayland {'disable' if self.options.no_xwayland else 'enable'}\n"
                       f"exec {self.teller(desktop)}\n")

    @staticmethod
    def _settings(desktop):
        return f"{desktop.folder}/sway.conf"

    def start_compositor(self, desktop):
        desktop.start("sway", ["sway", "-c", self._settings(desktop)],
                      WLR_BACKENDS="headless", WLR_LIBINPUT_NO_DEVICES="1", WLR_RENDERER="pixman")

    def compositor_ready(self, desktop):
        self.take_told(desktop, "sway", ("DISPLAY", "WAYLAND_DISPLAY", "SWAYSOCK"))
