"""Calls over a message bus."""
from gi.repository import Gio, GLib

SECONDS = 20  # timeout for a reply; even a modal window delays none, so this is never reached in a passing test


class Bus:
    """A connection to the bus at an address."""

    def __init__(self, address):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)

    def call(self, name, path, interface, method, arguments=None):
        """Calls a method and returns its reply as Python values. Raises GLib.Error."""
        return self.connection.call_sync(name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE,
                                         SECONDS * 1000, None).unpack()

    def send(self, name, path, interface, method, arguments=None):
        """Calls a method without waiting for its reply."""
        self.connection.call(name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, -1, None, None)
        self.connection.flush_sync(None)

    def property(self, name, path, interface, what):
        return self.call(name, path, "org.freedesktop.DBus.Properties", "Get",
                         GLib.Variant("(ss)", (interface, what)))[0]

    def _ask(self, question, *arguments):
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", question, *arguments)

    def has_owner(self, name):
        return self._ask("NameHasOwner", GLib.Variant("(s)", (name,)))[0]

    def process_of(self, name):
        return self._ask("GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)))[0]
