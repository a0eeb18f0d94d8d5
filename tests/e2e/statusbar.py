"""A desktop's status bar that shows nothing: the watcher of StatusNotifierItems, with a host. Usage: statusbar.py

It ends with the process that started it, or when its standard input does. A line of input, "host" or "no host", changes
whether there is a host."""

from gi.repository import Gio, GLib

from busprogram import serve

NAME = "org.kde.StatusNotifierWatcher"
PATH = "/StatusNotifierWatcher"
INTERFACE = Gio.DBusNodeInfo.new_for_xml(f"""
<node><interface name="{NAME}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
  <signal name="StatusNotifierHostRegistered"/>
  <signal name="StatusNotifierHostUnregistered"/>
</interface></node>""").interfaces[0]


class Watcher:
    def __init__(self, bus):
        self.bus = bus
        self.items = []
        self.has_host = True
        bus.register_object(PATH, INTERFACE, self.call, self.value, None)

    def tell(self, signal, *values):
        arguments = GLib.Variant("(" + "s" * len(values) + ")", values)
        self.bus.emit_signal(None, PATH, NAME, signal, arguments)

    def call(self, _bus, sender, _path, _interface, method, arguments, invocation):
        if method == "RegisterStatusNotifierItem":
            # The argument is the item's bus name, or a path on the sender's connection.
            name = arguments.unpack()[0]
            self.items.append(name if not name.startswith("/") else sender)
            self.tell("StatusNotifierItemRegistered", name)
        invocation.return_value(None)

    def value(self, _bus, _sender, _path, _interface, name):
        return {"RegisteredStatusNotifierItems": GLib.Variant("as", self.items),
                "IsStatusNotifierHostRegistered": GLib.Variant("b", self.has_host),
                "ProtocolVersion": GLib.Variant("i", 0)}[name]

    def set_host(self, has_host):
        self.has_host = has_host
        self.tell("StatusNotifierHostRegistered" if has_host else "StatusNotifierHostUnregistered")


WATCHER = Watcher(Gio.bus_get_sync(Gio.BusType.SESSION))
serve(WATCHER.bus, NAME, lambda line: WATCHER.set_host(line == "host"))
