# SPDX-License-Identifier: GPL-3.0-or-later
"""The parts of a desktop: each function starts one part; each wait is for a condition, never for a time."""
import os
import shlex
import shutil
import signal
import subprocess
import time

from desktop import processes

BOUND = 30.0  # seconds that any part may take to come up; a part needs well under one
WINDOW_MANAGERS = {
    "openbox": (["openbox", "--sm-disable"], "openbox"),
    "xfwm4": (["xfwm4", "--sm-client-disable"], "xfwm4"),
    "xfwm4_plain": (["xfwm4", "--sm-client-disable", "--compositor=off"], "xfwm4"),  # without its compositor
    "kwin_x11": (["kwin_x11"], "kwin-x11"),
}
_PROGRAMS = {
    "Xvfb": "xvfb",
    "setxkbmap": "x11-xkb-utils",
    "xprop": "x11-utils",
    "dbus-daemon": "dbus",
    "dbus-send": "dbus",
    "pulseaudio": "pulseaudio",
    "pactl": "pulseaudio-utils",
    "gnome-keyring-daemon": "gnome-keyring",
}
_A11Y_SERVICE = "/usr/share/dbus-1/services/org.a11y.Bus.service"

AUDIO = """\
.fail
load-module module-native-protocol-unix auth-anonymous=1
load-module module-null-sink sink_name=virtual_speaker rate=48000 norewinds=1 sink_properties=device.description=Virtual_Speaker
load-module module-remap-source source_name=virtual_mic master=virtual_speaker.monitor \
source_properties=device.description=Virtual_Microphone
set-default-sink virtual_speaker
set-default-source virtual_mic
"""


class Failure(Exception):
    """The desktop could not be made; the text says why."""


def missing(window_manager):
    """The Debian packages that have to be installed first."""
    programs = dict(_PROGRAMS)
    command, package = WINDOW_MANAGERS[window_manager]
    programs[command[0]] = package
    packages = {package for program, package in programs.items() if not shutil.which(program)}
    if not os.path.exists(_A11Y_SERVICE):
        packages.add("at-spi2-core")
    return sorted(packages)


class Desktop:
    """Starts the parts in the folder and with the environment given; ending them is the caller's business."""

    def __init__(self, folder, environment):
        self.folder = folder
        self.environment = environment
        self._started = {}

    def _start(self, name, command, **more):
        parent = os.getpid()
        with open(f"{self.folder}/logs/{name}", "wb") as log:
            process = subprocess.Popen(
                command, env=self.environment, cwd=self.folder, start_new_session=True, stdout=log, stderr=log,
                preexec_fn=lambda: processes.die_with_parent(signal.SIGTERM, parent),
                **{"stdin": subprocess.DEVNULL, **more})
        self._started[name] = process
        return process

    def _fail(self, name, what):
        with open(f"{self.folder}/logs/{name}", encoding="utf-8", errors="replace") as log:
            tail = "".join(log.readlines()[-20:])
        raise Failure(f"{name} {what}\n{tail}".rstrip())

    def _wait(self, name, what, condition):
        end = time.monotonic() + BOUND
        while not (result := condition()):
            if self._started[name].poll() is not None:
                self._fail(name, f"ended with status {self._started[name].returncode} before {what}")
            if time.monotonic() > end:
                self._fail(name, f"did not come up within {BOUND:.0f} s: {what}")
            signal.sigtimedwait({signal.SIGCHLD}, 0.01)
        return result

    def _answer(self, *command):
        """What a program printed, or nothing when it failed."""
        done = subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              text=True, check=False)
        return done.stdout if done.returncode == 0 else ""

    def _read_line(self, name, end):
        """The line that a part writes to its pipe when it is ready."""
        with os.fdopen(end) as pipe:
            line = pipe.readline().strip()
        if not line:
            self._started[name].wait(BOUND)
            self._fail(name, f"ended with status {self._started[name].returncode} at its start")
        return line

    def start_display(self, size):
        mine, theirs = os.pipe()
        self._start("Xvfb", ["Xvfb", "-displayfd", str(theirs), "-screen", "0", f"{size}x24", "-nolisten", "tcp",
                             "-noreset", "+extension", "RANDR"], pass_fds=[theirs])
        os.close(theirs)
        return mine

    def display_ready(self, pipe, layout):
        self.environment["DISPLAY"] = ":" + self._read_line("Xvfb", pipe)
        if layout != "us":
            set_layout = subprocess.run(["setxkbmap", "-layout", layout], env=self.environment, check=False,
                                        capture_output=True, text=True)
            if set_layout.returncode != 0:
                raise Failure(f"the keyboard layout {layout} cannot be set: {set_layout.stderr.strip()}")

    def start_audio(self):
        """The script that starts the audio server stays in the folder, so that a test can start it again."""
        settings = f"{self.folder}/audio.pa"
        script = f"{self.folder}/audio-server"
        command = ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--realtime=no",
                   "--high-priority=no", "--use-pid-file=yes", "--log-target=stderr", "-F", settings]
        with open(settings, "w", encoding="utf-8") as file:
            file.write(AUDIO)
        with open(script, "w", encoding="utf-8") as file:
            file.write(f"#!/bin/sh\nexec {shlex.join(command)}\n")
        os.chmod(script, 0o700)
        self._start("pulseaudio", [script])

    def audio_ready(self):
        self._wait("pulseaudio", "the default source is virtual_mic",
                   lambda: self._answer("pactl", "get-default-source").strip() == "virtual_mic")

    def start_bus(self):
        mine, theirs = os.pipe()
        address = self.environment["DBUS_SESSION_BUS_ADDRESS"]
        self._start("dbus-daemon", ["dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address={address}",
                                    f"--print-address={theirs}"], pass_fds=[theirs])
        os.close(theirs)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self._read_line("dbus-daemon", mine)

    def _call(self, bus, destination, path, method, *arguments):
        return self._answer("dbus-send", bus, "--print-reply=literal", "--reply-timeout=20000",
                            f"--dest={destination}", path, method, *arguments)

    def start_accessibility(self):
        """Switched on before any application starts, since Qt looks only once; the registry is started with it,
        since Qt 5 stays silent for good when it finds none."""
        self._call("--session", "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties.Set",
                   "string:org.a11y.Status", "string:IsEnabled", "variant:boolean:true")
        enabled = self._call("--session", "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties.Get",
                             "string:org.a11y.Status", "string:IsEnabled")
        address = self._call("--session", "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress").strip()
        if "true" not in enabled or not address:
            raise Failure("the accessibility bus (at-spi2-core) does not answer")
        registry = self._call(f"--bus={address}", "org.freedesktop.DBus", "/org/freedesktop/DBus",
                              "org.freedesktop.DBus.StartServiceByName", "string:org.a11y.atspi.Registry", "uint32:0")
        if not registry:
            raise Failure("the accessibility registry (at-spi2-core) does not start")

    def start_keyring(self):
        keyring = self._start("gnome-keyring-daemon",
                              ["gnome-keyring-daemon", "--foreground", "--components=secrets", "--unlock"],
                              stdin=subprocess.PIPE)
        keyring.stdin.write(b"\n")
        keyring.stdin.close()

    def keyring_ready(self):
        def collection():
            path = self._call("--session", "org.freedesktop.secrets", "/org/freedesktop/secrets",
                              "org.freedesktop.Secret.Service.ReadAlias", "string:default").strip()
            return path not in ("", "/")
        self._wait("gnome-keyring-daemon", "there is a default collection", collection)

    def start_window_manager(self, name):
        self._start(name, WINDOW_MANAGERS[name][0])

    def window_manager_ready(self, name):
        def managed():
            answer = self._answer("xprop", "-root", "-notype", "_NET_SUPPORTING_WM_CHECK")
            window = answer.partition("window id # ")[2].strip()
            return window and "_NET_WM_NAME" in self._answer("xprop", "-id", window, "-notype", "_NET_WM_NAME")
        self._wait(name, "it has set _NET_SUPPORTING_WM_CHECK", managed)
