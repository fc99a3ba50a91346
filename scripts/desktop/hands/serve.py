# SPDX-License-Identifier: GPL-3.0-or-later
"""The hands and eyes of the user of a Wayland session: serve.py SESSION LAYOUT COMPOSITOR

A Wayland client sees and moves nothing but itself, and a key is up again when the client that pressed it goes. So one
process holds the devices as long as the desktop lasts, and takes requests at the socket $LORVANE_HANDS. A request is a
line of JSON, a list of the verb and its arguments; the answer is one as well: {"ok": ANSWER} or {"error": TEXT}.
    press KEY, release KEY [MILLISECONDS]   now or after so long; KEY is an X key code (evdev + 8)
    down                                    the keys that are down
    point X Y, button DOWN                  the mouse's place on the screen, and its left button
    windows                                 all, each an object
    activate ID, close ID, fullscreen ID WANTED
    picture PATH                            of the whole screen, as PNG
    clipboard                               the types on it as GNOME Shell knows them
    extension FOLDER                        switches a GNOME Shell extension on
    compositor                              its process
"""
import importlib
import json
import os
import socketserver
import sys
import threading
import time

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__)))))

_VERBS = ("point", "button", "windows", "activate", "close", "fullscreen", "picture", "clipboard",
          "extension")


class Server(socketserver.ThreadingUnixStreamServer):
    daemon_threads = True

    def __init__(self, path, hands, compositor):
        # The name appears when it can be connected to.
        super().__init__(f"{path}.new", Handler)
        os.rename(f"{path}.new", path)
        self._hands = hands
        self._compositor = compositor
        self._lock = threading.Lock()
        self._down = []

    def act(self, verb, *arguments):
        if verb == "release" and len(arguments) > 1:
            time.sleep(arguments[1] / 1000)
        with self._lock:
            if verb in ("press", "release"):
                return self._key(arguments[0], verb == "press")
            if verb == "down":
                return self._down
            if verb == "compositor":
                return self._compositor
            if verb not in _VERBS:
                raise ValueError(f"no such request: {verb}")
            return getattr(self._hands, verb)(*arguments)

    def _key(self, key, down):
        self._hands.key(key, down)
        self._down = [one for one in self._down if one != key] + ([key] if down else [])


class Handler(socketserver.StreamRequestHandler):
    def handle(self):
        for line in self.rfile:
            try:
                answer = {"ok": self.server.act(*json.loads(line))}
            except Exception as error:  # whatever it is, who asked shall know
                answer = {"error": f"{type(error).__name__}: {error}"}
            self.wfile.write(json.dumps(answer).encode() + b"\n")


def main():
    session, layout, compositor = sys.argv[1:]
    hands = importlib.import_module(f"desktop.hands.{session}").Hands(layout)
    Server(os.environ["LORVANE_HANDS"], hands, int(compositor)).serve_forever()


if __name__ == "__main__":
    main()
