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
_PROGRAMS = {
    "dbus-daemon": "dbus",
    "dbus-send": "dbus",
    "pulseaudio": "pulseaudio",
    "pactl": "pulseaudio-utils",
    "gnome-keyring-daemon": "gnome-keyring",
}
IBUS_PROGRAMS = {"ibus-daemon": "ibus"}
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


def missing(programs):
    """The Debian packages that have to be installed first; what the session needs besides is given."""
    packages = {package for program, package in {**_PROGRAMS, **programs}.items() if not shutil.which(program)}
    if not os.path.exists(_A11Y_SERVICE):
        packages.add("at-spi2-core")
    return sorted(packages)


class Desktop:
    """Starts the parts in the folder and with the environment given; ending them is the caller's business."""

    def __init__(self, folder, environment):
        self.folder = folder
        self.environment = environment
        self._started = {}

    def start(self, name, command, stdin=subprocess.DEVNULL, pass_fds=(), **variables):
        """Starts a part whose output goes to logs/NAME; the variables are for it alone, those that are None are taken from it."""
        parent = os.getpid()

        def prepare():
            processes.hear_all_signals()
            processes.die_with_parent(signal.SIGTERM, parent)

        environment = {name: value for name, value in {**self.environment, **variables}.items() if value is not None}
        with open(f"{self.folder}/logs/{name}", "wb") as log:
            process = subprocess.Popen(
                command, env=environment, cwd=self.folder, start_new_session=True, stdin=stdin,
                stdout=log, stderr=log, pass_fds=pass_fds, preexec_fn=prepare)
        self._started[name] = process
        return process

    def end(self, name):
        """With what it started in turn, which is in its process group."""
        process = self._started[name]
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()

    def pid(self, name):
        return self._started[name].pid

    def fail(self, name, what):
        with open(f"{self.folder}/logs/{name}", encoding="utf-8", errors="replace") as log:
            tail = "".join(log.readlines()[-20:])
        raise Failure(f"{name} {what}\n{tail}".rstrip())

    def wait(self, name, what, condition):
        end = time.monotonic() + BOUND
        while not (result := condition()):
            if self._started[name].poll() is not None:
                self.fail(name, f"ended with status {self._started[name].returncode} before {what}")
            if time.monotonic() > end:
                self.fail(name, f"did not come up within {BOUND:.0f} s: {what}")
            signal.sigtimedwait({signal.SIGCHLD}, 0.01)
        return result

    def answer(self, *command):
        """What a program printed, or nothing when it failed or took too long."""
        try:
            done = subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                  text=True, check=False, timeout=BOUND, preexec_fn=processes.hear_all_signals)
        except subprocess.TimeoutExpired:
            return ""
        return done.stdout if done.returncode == 0 else ""

    def read_line(self, name, end):
        """The line that a part writes to its pipe when it is ready."""
        with os.fdopen(end) as pipe:
            line = pipe.readline().strip()
        if not line:
            self._started[name].wait(BOUND)
            self.fail(name, f"ended with status {self._started[name].returncode} at its start")
        return line

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
        self.start("pulseaudio", [script])

    def audio_ready(self):
        self.wait("pulseaudio", "the default source is virtual_mic",
                   lambda: self.answer("pactl", "get-default-source").strip() == "virtual_mic")

    def start_bus(self):
        address = self.environment["DBUS_SESSION_BUS_ADDRESS"]
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.start_bus_daemon(
            "dbus-daemon", "--session", f"--address={address}")

    def start_bus_daemon(self, name, *options):
        """Starts a bus and returns its address when it can be reached."""
        mine, theirs = os.pipe()
        self.start(name, ["dbus-daemon", "--nofork", "--nopidfile", f"--print-address={theirs}", *options],
                   pass_fds=[theirs])
        os.close(theirs)
        return self.read_line(name, mine)

    def call(self, bus, destination, path, method, *arguments):
        return self.answer("dbus-send", bus, "--print-reply=literal", "--reply-timeout=20000",
                           f"--dest={destination}", path, method, *arguments)

    def hand_to_services(self, names):
        """What the bus starts from now on gets these of our variables."""
        values = ",".join(f"{name},{self.environment[name]}" for name in names if name in self.environment)
        self.call("--session", "org.freedesktop.DBus", "/org/freedesktop/DBus",
                  "org.freedesktop.DBus.UpdateActivationEnvironment", f"dict:string:string:{values}")

    def start_accessibility(self, screen_reader=False):
        """Switched on before any application starts, since Qt looks only once; the registry is started with it,
        since Qt 5 stays silent for good when it finds none."""
        for switch in ("IsEnabled", "ScreenReaderEnabled") if screen_reader else ("IsEnabled",):
            self.call("--session", "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties.Set",
                      "string:org.a11y.Status", f"string:{switch}", "variant:boolean:true")
        enabled = self.call("--session", "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties.Get",
                             "string:org.a11y.Status", "string:IsEnabled")
        address = self.call("--session", "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress").strip()
        if "true" not in enabled or not address:
            raise Failure("the accessibility bus (at-spi2-core) does not answer")
        registry = self.call(f"--bus={address}", "org.freedesktop.DBus", "/org/freedesktop/DBus",
                              "org.freedesktop.DBus.StartServiceByName", "string:org.a11y.atspi.Registry", "uint32:0")
        if not registry:
            raise Failure("the accessibility registry (at-spi2-core) does not start")

    def choose_ibus(self):
        """As im-config does for a user; the daemon's address is sought elsewhere by suites with settings of their own."""
        self.environment.update({"GTK_IM_MODULE": "ibus", "QT_IM_MODULE": "ibus", "XMODIFIERS": "@im=ibus",
                                 "IBUS_ADDRESS_FILE": f"{self.folder}/run/ibus-address"})

    def start_ibus(self):
        """Without its panel, which would put an engine in force from the user's settings."""
        self.start("ibus-daemon", ["ibus-daemon", "--xim", "--panel=disable"])
        engine = "xkb:us::eng"
        self.wait("ibus-daemon", "an engine is in force",
                  lambda: self.answer("ibus", "engine", engine) or self.answer("ibus", "engine").strip() == engine)

    def start_keyring(self):
        keyring = self.start("gnome-keyring-daemon",
                              ["gnome-keyring-daemon", "--foreground", "--components=secrets", "--unlock"],
                              stdin=subprocess.PIPE)
        keyring.stdin.write(b"\n")
        keyring.stdin.close()

    def keyring_ready(self):
        def collection():
            path = self.call("--session", "org.freedesktop.secrets", "/org/freedesktop/secrets",
                              "org.freedesktop.Secret.Service.ReadAlias", "string:default").strip()
            return path not in ("", "/")
        self.wait("gnome-keyring-daemon", "there is a default collection", collection)
