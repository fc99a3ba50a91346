# SPDX-License-Identifier: GPL-3.0-or-later
"""sway: a compositor of the wlroots family."""
import os

from desktop.sessions.wayland import WaylandSession

_TOLD = ("DISPLAY", "WAYLAND_DISPLAY", "SWAYSOCK")


class Sway(WaylandSession):
    name = "sway"
    current_desktop = "sway"
    ends_last = ("sway", "Xwayland")
    compositor_programs = {"sway": "sway", "swaymsg": "sway", "grim": "grim"}

    def __init__(self, options):
        super().__init__(options)
        self._told = None

    def start_compositor(self, desktop):
        self._told = f"{desktop.folder}/run/sway-environment"
        settings = f"{desktop.folder}/sway.conf"
        with open(settings, "w", encoding="utf-8") as file:
            file.write(f"output * resolution {self.options.size}\n"
                       "focus_follows_mouse no\n"
                       f"exec env -0 >'{self._told}.new' && mv '{self._told}.new' '{self._told}'\n")
        desktop.start("sway", ["sway", "-c", settings], WLR_BACKENDS="headless", WLR_LIBINPUT_NO_DEVICES="1",
                      WLR_RENDERER="pixman")

    def compositor_ready(self, desktop):
        desktop.wait("sway", "it has run its start commands", lambda: os.path.exists(self._told))
        with open(self._told, encoding="utf-8") as file:
            told = dict(entry.split("=", 1) for entry in file.read().split("\0") if "=" in entry)
        desktop.environment.update({name: told[name] for name in _TOLD})
