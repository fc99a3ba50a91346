# SPDX-License-Identifier: GPL-3.0-or-later
"""Calls over the session bus."""
from gi.repository import Gio, GLib

_BOUND = 10_000  # milliseconds


class Service:
    """An object of a program on the bus. It stays the same client to that program as long as it lives."""

    def __init__(self, name, connection=None):
        self._name = name
        self.connection = connection or Gio.bus_get_sync(Gio.BusType.SESSION)

    def call(self, path, interface, method, signature="()", *arguments):
        """The answer as a tuple."""
        return self.connection.call_sync(self._name, path, interface, method, GLib.Variant(signature, arguments),
                                         None, Gio.DBusCallFlags.NONE, _BOUND).unpack()

    def call_with_descriptor(self, descriptor, path, interface, method, signature, *arguments):
        """The same with a file descriptor, which the arguments name as 0."""
        descriptors = Gio.UnixFDList.new()
        descriptors.append(descriptor)
        answer, _descriptors = self.connection.call_with_unix_fd_list_sync(
            self._name, path, interface, method, GLib.Variant(signature, arguments), None, Gio.DBusCallFlags.NONE,
            _BOUND, descriptors)
        return answer.unpack()
