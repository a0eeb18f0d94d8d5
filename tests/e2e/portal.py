"""A desktop's portal that knows one setting: whether windows are to be dark. Usage: portal.py NUMBER

It ends with the process that started it, or when its standard input does. A line of input is the preference's new number:
0 none, 1 dark, 2 light. Other programs start it as a Portal."""

import subprocess
import sys

from gi.repository import Gio, GLib

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


class Portal:
    """A portal of another process, with that preference; a context manager."""

    def __init__(self, preference):
        self.process = subprocess.Popen(["/usr/bin/python3", __file__, str(preference)], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        self.process.stdout.readline()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.communicate()

    def prefer(self, preference):
        self.process.stdin.write(f"{preference}\n")
        self.process.stdin.flush()


def main():
    loop = GLib.MainLoop()
    portal = Settings(Gio.bus_get_sync(Gio.BusType.SESSION), int(sys.argv[1]))

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


if __name__ == "__main__":
    main()
