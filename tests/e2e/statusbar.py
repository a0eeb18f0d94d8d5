"""A desktop's status bar that shows nothing: the watcher of StatusNotifierItems, with a host. Usage: statusbar.py

It ends with the process that started it, or when its standard input does. A line of input, "host" or "no host", changes
whether there is a host."""

import sys

from gi.repository import Gio, GLib

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
            # Either the item's bus name or, from its sender, a path.
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


def main():
    loop = GLib.MainLoop()
    watcher = Watcher(Gio.bus_get_sync(Gio.BusType.SESSION))

    def hear(*_):
        line = sys.stdin.readline()
        if not line:
            loop.quit()
            return False
        watcher.set_host(line.strip() == "host")
        return True

    GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, hear)
    # Ready when the name is owned.
    Gio.bus_own_name_on_connection(watcher.bus, NAME, Gio.BusNameOwnerFlags.NONE,
                                   lambda *_: print("ready", flush=True), None)
    loop.run()


main()
