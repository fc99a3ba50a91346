# SPDX-License-Identifier: GPL-3.0-or-later
"""The program as its user starts it: its preferences, its start, its state and its end."""
import json
import os
import subprocess
import time


class Failure(Exception):
    """What was asked did not happen; the text says what was seen instead."""


def until(condition, seconds, pause=0.05):
    """The condition's first true answer, or its last one when the time is over."""
    end = time.monotonic() + seconds
    while not (answer := condition()) and time.monotonic() < end:
        time.sleep(pause)
    return answer


def _folder(variable, default):
    return os.environ.get(variable) or os.path.expanduser(default)


def log_file():
    return f"{_folder('XDG_STATE_HOME', '~/.local/state')}/Logs/Tirra/tirra.log"


def skip_introduction():
    """The key watch waits until the introduction has been seen. True when this had to be written."""
    path = f"{_folder('XDG_CONFIG_HOME', '~/.config')}/Tirra/preferences.json"
    preferences = {}
    if os.path.exists(path):
        with open(path, encoding="utf-8") as file:
            preferences = json.load(file)
    if "tirra.mac.onboarded" in preferences:
        return False
    preferences["tirra.mac.onboarded"] = True
    os.makedirs(os.path.dirname(path), mode=0o700, exist_ok=True)
    with open(os.open(f"{path}.new", os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "w", encoding="utf-8") as file:
        json.dump(preferences, file, indent=2)
    os.rename(f"{path}.new", path)
    return True


def tail(path, lines=25):
    try:
        with open(path, encoding="utf-8", errors="replace") as file:
            return "".join(file.readlines()[-lines:]).rstrip() or "(empty)"
    except OSError as error:
        return f"({error.strerror}: {path})"


class Program:
    """`lorvane`, built in the folder given; what it prints goes to a file."""

    def __init__(self, folder, output):
        self.executable = f"{folder}/lorvane"
        self.output = output
        self.process = None

    def status(self):
        """Its state as it tells it, or nothing while it does not run."""
        answer = subprocess.run([self.executable, "status", "--json"], stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, check=False)
        try:
            return json.loads(answer.stdout) if answer.returncode == 0 else None
        except ValueError:
            return None

    def start(self):
        with open(self.output, "wb") as output:
            self.process = subprocess.Popen([self.executable], stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                            start_new_session=True)

    def wait_until_ready(self, seconds=30):
        """Its name is on the bus, it watches the keys and its backend answers."""
        def ready():
            status = self.status() or {}
            return all(status.get(what, True) for what in ("permissionsGranted", "watching", "backendReady")) and status
        if not until(lambda: self.process.poll() is not None or ready(), seconds):
            raise Failure(f"lorvane is not ready after {seconds} s: {self.status()}")
        if self.process.poll() is not None:
            raise Failure(f"lorvane ended with status {self.process.returncode} at its start")

    def quit(self):
        subprocess.run([self.executable, "quit"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()

    def what_was_seen(self):
        return (f"state: {self.status()}\n--- what lorvane printed\n{tail(self.output)}\n"
                f"--- the end of its log\n{tail(log_file())}")
