"""The application's interface on the session bus."""

from gi.repository import Gio, GLib


def call(operation, arguments):
    Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(
        "com.morvel.Pelmora", "/com/morvel/Pelmora", "org.freedesktop.Application", operation, arguments, None,
        Gio.DBusCallFlags.NO_AUTO_START, 5000)


def open_over_bus(*paths):
    call("Open", GLib.Variant("(asa{sv})", (["file://" + path for path in paths], {})))
