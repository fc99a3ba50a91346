# SPDX-License-Identifier: GPL-3.0-or-later
"""The main job in a virtual desktop: an application is opened, the hold key is held by hand while speech is played
into the microphone, and what then stands in the application's field is read back through accessibility."""
import argparse
import json
import os
import signal
import subprocess
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.realpath(__file__))))

from desktop.program import Failure, Program, skip_introduction, until  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
RIGHT_CONTROL = "105"  # X key code: the hold key of a first start
PLAY = f"{ROOT}/tests/support/tools/play-speech"


class Desk:
    """The user's side: an application with the focus in a text, hands and eyes."""

    def __init__(self, tools):
        self.tools = tools

    def run(self, tool, *arguments):
        done = subprocess.run([f"{self.tools}/{tool}", *arguments], capture_output=True, text=True, check=False)
        return done.stdout if done.returncode == 0 else None

    def open_application(self, command):
        if not command:
            path = f"{os.environ['HOME']}/note.txt"
            with open(path, "w", encoding="utf-8"):
                pass
            command = f"mousepad --disable-server '{path}'"
        print(f"application: {command}", flush=True)
        output = f"{os.environ['LORVANE_DESKTOP']}/logs/application"
        with open(output, "wb") as log:
            subprocess.Popen(command, shell=True, stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        field = self.field(seconds=60)
        if not field:
            raise Failure("no text field has the focus that can be read through accessibility; windows:\n"
                          f"{self.run('lorvane-window', 'list')}")
        return field

    def field(self, seconds=0, pid=None):
        of = ["--pid", str(pid)] if pid else []
        answer = self.run("lorvane-field", "show", "--wait", str(seconds), *of)
        return json.loads(answer) if answer else None

    def press(self, key):
        self.run("lorvane-key", "press", key)

    def release(self, key):
        self.run("lorvane-key", "release", key)

    def set_up(self):
        if self.run("lorvane-session", "set-up") is None:
            raise Failure("the session cannot be set up as its user does it once")

    def screenshot(self, path):
        self.run("lorvane-session", "picture", path)


def play(speech):
    done = subprocess.run([PLAY, speech], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise Failure(f"{speech} cannot be played: {done.stderr.strip()}")


def added(before, after):
    """What the text has gained, told from what was there."""
    start = 0
    while start < min(len(before), len(after)) and before[start] == after[start]:
        start += 1
    end = 0
    while end < min(len(before), len(after)) - start and before[-1 - end] == after[-1 - end]:
        end += 1
    return after[start:len(after) - end].strip()


def dictate(desk, program, speech, field):
    """Returns what landed in the field."""
    if not until(lambda: (program.status() or {}).get("phase") == "idle", 10):
        raise Failure("lorvane is not at rest")
    desk.press(RIGHT_CONTROL)
    try:
        if not until(lambda: (program.status() or {}).get("phase") == "recording", 10):
            raise Failure("holding the key did not start a recording")
        play(speech)
    finally:
        desk.release(RIGHT_CONTROL)
    return wait_for_text(desk, program, field)


def wait_for_text(desk, program, field):
    seen = {}

    def landed():
        now = desk.field(pid=field["pid"])
        seen["text"] = now["text"] if now else seen.get("text")
        seen["phase"] = (program.status() or {}).get("phase")
        return seen["phase"] not in ("recording", "processing") and added(field["text"], seen["text"] or "")

    def at_rest():
        return landed() or seen["phase"] in (None, "idle", "notice")

    until(at_rest, 120)
    # A program that is back at rest has pasted already; the application may need a moment to take it in.
    text = until(landed, 5)
    if not text:
        raise Failure(f"no text landed; the field held {field['text']!r} and holds {seen['text']!r}")
    return text


def keep(program):
    wayland = f"WAYLAND_DISPLAY={os.environ['WAYLAND_DISPLAY']} " if "WAYLAND_DISPLAY" in os.environ else ""
    print(f"it all runs on: DISPLAY={os.environ['DISPLAY']} {wayland}"
          f"DBUS_SESSION_BUS_ADDRESS={os.environ['DBUS_SESSION_BUS_ADDRESS']}")
    print(f"its folders are in {os.environ['LORVANE_DESKTOP']}; lorvane is process {program.process.pid}; "
          f"to end it all: kill {os.getpid()}", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--bin", required=True)
    parser.add_argument("--speech", required=True)
    parser.add_argument("--app", default="")
    parser.add_argument("--picture", required=True)
    parser.add_argument("--keep", action="store_true")
    options = parser.parse_args()
    desk = Desk(options.bin)
    program = Program(options.bin, f"{os.environ['LORVANE_DESKTOP']}/logs/lorvane")
    text = None
    try:
        skip_introduction()
        desk.set_up()
        field = desk.open_application(options.app)
        program.start()
        program.wait_until_ready()
        print(f"speech: {options.speech}", flush=True)
        text = dictate(desk, program, options.speech, field)
    except Failure as failure:
        print(f"run: {failure}\n{program.what_was_seen()}", file=sys.stderr, flush=True)
    desk.screenshot(options.picture)
    if options.keep:
        keep(program)
    elif program.process:
        program.quit()
    if text:
        print("landed: " + " ".join(text.split()), flush=True)
    if options.keep:
        with open(f"{options.picture}.status", "w", encoding="utf-8") as file:
            file.write("0" if text else "1")
        signal.pause()
    sys.exit(0 if text else 1)


if __name__ == "__main__":
    main()
