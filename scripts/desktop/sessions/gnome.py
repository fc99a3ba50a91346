# SPDX-License-Identifier: GPL-3.0-or-later
"""GNOME Shell. It lets every client evaluate and take pictures ("unsafe mode"), as only a test may."""
import json

from desktop.hands.keymap import split
from desktop.sessions.wayland import WaylandSession

# In place of the system's bus, with nobody on it: neither logind nor any other service is needed.
_EMPTY_BUS = """\
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>{address}</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
  </policy>
</busconfig>
"""


class Gnome(WaylandSession):
    name = "gnome"
    current_desktop = "GNOME"
    ends_last = ("gnome-shell", "Xwayland")
    compositor_programs = {"gnome-shell": "gnome-shell", "ibus-daemon": "ibus", "gsettings": "libglib2.0-bin",
                           "gdbus": "libglib2.0-bin"}

    def environment(self, folder):
        return {**super().environment(folder), "WAYLAND_DISPLAY": "wayland-1", "DESKTOP_SESSION": "gnome",
                "XDG_SESSION_DESKTOP": "gnome", "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={folder}/run/system-bus",
                # Else it is sought among the settings, of which a suite has its own.
                "IBUS_ADDRESS_FILE": f"{folder}/run/ibus-address"}

    def prepare(self, desktop):
        settings = f"{desktop.folder}/system-bus.conf"
        with open(settings, "w", encoding="utf-8") as file:
            file.write(_EMPTY_BUS.format(address=desktop.environment["DBUS_SYSTEM_BUS_ADDRESS"]))
        desktop.start_bus_daemon("system-bus", f"--config-file={settings}")
        self._set("org.gnome.desktop.interface", "enable-animations", "false", desktop)
        self._set("org.gnome.desktop.session", "idle-delay", "0", desktop)
        self._set("org.gnome.shell", "welcome-dialog-last-shown-version", "'999'", desktop)
        self._set("org.gnome.desktop.input-sources", "sources", self._sources(), desktop)

    def start_compositor(self, desktop):
        desktop.start("gnome-shell", ["gnome-shell", "--headless", "--wayland", "--unsafe-mode", "--virtual-monitor",
                                      self.options.size, "--wayland-display=wayland-1"], WAYLAND_DISPLAY=None)

    @staticmethod
    def _set(schema, key, value, desktop):
        desktop.answer("gsettings", "set", schema, key, value)

    def _sources(self):
        layouts, variants = (part.split(",") for part in split(self.options.layout))
        names = [f"{layout}+{variant}" if variant else layout for layout, variant in zip(layouts, variants)]
        return "[" + ", ".join(f"('xkb', '{name}')" for name in names) + "]"

    def compositor_ready(self, desktop):
        """The shell is up when it has left its overview, where no window has the focus."""
        leave = "Main.layoutManager._startingUp ? false : (Main.overview.hide(), !Main.overview.visible)"
        desktop.wait("gnome-shell", "it has left its overview", lambda: self._evaluate(desktop, leave))
        for name in ("DISPLAY", "XAUTHORITY"):
            desktop.environment[name] = self._evaluate(desktop, f"imports.gi.GLib.getenv('{name}')")

    @staticmethod
    def _evaluate(desktop, expression):
        """What it is inside the shell; nothing when it cannot be told."""
        answer = desktop.answer("gdbus", "call", "--session", "--timeout=10", "--dest=org.gnome.Shell",
                                "--object-path=/org/gnome/Shell", "--method=org.gnome.Shell.Eval", expression).strip()
        value = answer.removeprefix("(true, '").removesuffix("')")
        return json.loads(value) if value and value != answer else None
