"""A desktop's portal that knows one setting: whether windows are to be dark. Usage: portal.py NUMBER

It ends with the process that started it, or when its standard input does. A line of input is the preference's new number:
0 none, 1 dark, 2 light."""

import sys

from gi.repository import Gio, GLib

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
KEY = ("org.freedesktop.appearance", "color-scheme")
INTERFACE = Gio.DBusNodeInfo.new_for_xml(f"""
<node><interface name="{SETTINGS}">
  <method name="Read">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
  </method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>""").interfaces[0]


class Portal:
    def __init__(self, bus, number):
        self.bus = bus
        self.number = number
        bus.register_object(PATH, INTERFACE, self.call, None, None)

    def call(self, _bus, _sender, _path, _interface, _method, arguments, invocation):
        if arguments.unpack() == KEY:
            invocation.return_value(GLib.Variant("(v)", (GLib.Variant("v", GLib.Variant("u", self.number)),)))
        else:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "no such setting")

    def change(self, number):
        self.number = number
        self.bus.emit_signal(None, PATH, SETTINGS, "SettingChanged",
                             GLib.Variant("(ssv)", (*KEY, GLib.Variant("u", number))))


def main():
    loop = GLib.MainLoop()
    portal = Portal(Gio.bus_get_sync(Gio.BusType.SESSION), int(sys.argv[1]))

    def hear(*_):
        line = sys.stdin.readline()
        if not line:
            loop.quit()
            return False
        portal.change(int(line))
        return True

    GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, hear)
    # Ready when the name is owned.
    Gio.bus_own_name_on_connection(portal.bus, NAME, Gio.BusNameOwnerFlags.NONE,
                                   lambda *_: print("ready", flush=True), None)
    loop.run()


main()
