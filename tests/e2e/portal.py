"""A desktop's portal that knows one setting: whether windows are to be dark. Usage: portal.py NUMBER

It ends with the process that started it, or when its standard input does. A line of input is the preference's new number:
0 none, 1 dark, 2 light. Other programs start it as a Portal."""

import sys

from gi.repository import Gio, GLib

from busprogram import BusProgram, serve

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
DARK, LIGHT = 1, 2
SETTINGS = "org.freedesktop.portal.Settings"
KEY = ("org.freedesktop.appearance", "color-scheme")
INTERFACE = Gio.DBusNodeInfo.new_for_xml(f"""
<node><interface name="{SETTINGS}">
  <method name="Read">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
  </method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>""").interfaces[0]


class Settings:
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


class Portal(BusProgram):
    """A portal of another process, with that preference; a context manager."""

    def __init__(self, preference):
        super().__init__("portal.py", str(preference))

    def prefer(self, preference):
        self.tell(preference)


def main():
    settings = Settings(Gio.bus_get_sync(Gio.BusType.SESSION), int(sys.argv[1]))
    serve(settings.bus, NAME, lambda line: settings.change(int(line)))


if __name__ == "__main__":
    main()
