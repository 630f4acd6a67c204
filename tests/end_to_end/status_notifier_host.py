#!/usr/bin/python3
"""The part of a desktop's panel that status notifiers need: reports a registered host and keeps the list of items.

It draws nothing; the tests read the items and their menus themselves. The interface is freedesktop.org's
StatusNotifierWatcher.
"""
from gi.repository import Gio, GLib

NAME = "org.kde.StatusNotifierWatcher"
INTERFACE = f"""
<node><interface name="{NAME}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>
"""


class Watcher:
    def __init__(self):
        self.items = []

    def serve(self, connection, _name):
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        connection.register_object("/StatusNotifierWatcher", interface, self.call, self.property, None)

    def call(self, connection, sender, _path, _interface, method, parameters, invocation):
        if method == "RegisterStatusNotifierItem":
            service = parameters.unpack()[0]
            self.items.append(sender if service.startswith("/") else service)
            Gio.bus_watch_name_on_connection(connection, self.items[-1], Gio.BusNameWatcherFlags.NONE, None, self.gone)
        invocation.return_value(None)

    def gone(self, _connection, name):
        if name in self.items:
            self.items.remove(name)

    def property(self, _connection, _sender, _path, _interface, name):
        return {
            "RegisteredStatusNotifierItems": GLib.Variant("as", self.items),
            "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
            "ProtocolVersion": GLib.Variant("i", 0),
        }[name]


def main():
    Gio.bus_own_name(Gio.BusType.SESSION, NAME, Gio.BusNameOwnerFlags.NONE, Watcher().serve, None, None)
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
