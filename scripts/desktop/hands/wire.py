# SPDX-License-Identifier: GPL-3.0-or-later
"""A Wayland client without a library: requests as bytes on the compositor's socket.

The wire (https://wayland.freedesktop.org/docs/html/ch04.html): words of the machine's byte order; a message is the
object, then size << 16 | opcode, then its arguments; a string is its length with the final NUL, padded to a word.
"""
import array
import os
import socket
import struct

_DISPLAY = 1
_REGISTRY = 2


def string(text):
    data = text.encode() + b"\0"
    return struct.pack("=I", len(data)) + data + b"\0" * (-len(data) % 4)


def uint(*values):
    return struct.pack(f"={len(values)}I", *values)


def fixed(*values):
    return struct.pack(f"={len(values)}i", *(round(value * 256) for value in values))


class Connection:
    """The compositor of this environment, with its globals known."""

    def __init__(self):
        if given := os.environ.get("WAYLAND_SOCKET"):  # the compositor has started us
            self._socket = socket.socket(fileno=int(given))
        else:
            self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
            self._socket.connect(os.path.join(os.environ["XDG_RUNTIME_DIR"], os.environ["WAYLAND_DISPLAY"]))
        self._next = _REGISTRY + 1
        self._incoming = b""
        self.globals = {}
        self.request(_DISPLAY, 1, uint(_REGISTRY))
        self.round_trip()

    def request(self, target, opcode, arguments=b"", descriptor=None):
        message = uint(target, (8 + len(arguments)) << 16 | opcode) + arguments
        with_it = [] if descriptor is None else [
            (socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", [descriptor]))]
        self._socket.sendmsg([message], with_it)

    def new_id(self):
        self._next += 1
        return self._next - 1

    def bind(self, interface, version=1):
        """The object of a global, or nothing when the compositor does not offer it to us."""
        if interface not in self.globals:
            return None
        made = self.new_id()
        self.request(_REGISTRY, 0, uint(self.globals[interface]) + string(interface) + uint(version, made))
        return made

    def round_trip(self):
        """Returns when the compositor has seen everything so far; raises what it complains of."""
        callback = self.new_id()
        self.request(_DISPLAY, 0, uint(callback))
        while True:
            sender, opcode, arguments = self._event()
            if sender == callback:
                return
            if sender == _DISPLAY and opcode == 0:
                raise RuntimeError(f"the compositor complains: {arguments[12:].decode(errors='replace')}")
            if sender == _REGISTRY and opcode == 0:
                name, length = struct.unpack_from("=II", arguments)
                self.globals[arguments[8:8 + length - 1].decode()] = name

    def _event(self):
        head = self._read(8)
        sender, word = struct.unpack("=II", head)
        return sender, word & 0xFFFF, self._read((word >> 16) - 8)

    def _read(self, size):
        while len(self._incoming) < size:
            data, ancillary, _flags, _address = self._socket.recvmsg(65536, socket.CMSG_SPACE(64))
            for level, kind, content in ancillary:  # a keyboard map that nobody asked for
                if level == socket.SOL_SOCKET and kind == socket.SCM_RIGHTS:
                    for descriptor in array.array("i", content[:len(content) // 4 * 4]):
                        os.close(descriptor)
            if not data:
                raise RuntimeError("the compositor has closed the connection")
            self._incoming += data
        taken, self._incoming = self._incoming[:size], self._incoming[size:]
        return taken
