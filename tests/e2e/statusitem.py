"""Status items as a status bar sees them."""

from gi.repository import Gio, GLib

from busprogram import BusProgram
from desktop import wait


class StatusBar(BusProgram):
    """A host of StatusNotifierItems; a context manager."""

    def __init__(self):
        super().__init__("statusbar.py")

    def set_host(self, has_host):
        self.tell("host" if has_host else "no host")

    @staticmethod
    def item():
        """The one item that has registered, as soon as it has."""
        names = wait(lambda: property_of("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                                         "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems"))
        return Item(names[-1])


def ask(name, path, interface, operation, arguments):
    return Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(name, path, interface, operation, arguments, None,
                                                           Gio.DBusCallFlags.NONE, 5000).unpack()


def property_of(name, path, interface, key):
    return ask(name, path, "org.freedesktop.DBus.Properties", "Get", GLib.Variant("(ss)", (interface, key)))[0]


class Item:
    """An item, as a status bar sees it."""

    def __init__(self, name):
        self.name = name

    def value(self, key):
        return property_of(self.name, "/StatusNotifierItem", "org.kde.StatusNotifierItem", key)

    def click(self):
        ask(self.name, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate", GLib.Variant("(ii)", (0, 0)))

    def _menu(self, operation, arguments):
        return ask(self.name, self.value("Menu"), "com.canonical.dbusmenu", operation, arguments)

    def entries(self):
        """Numbers and properties of the menu's entries."""
        layout = self._menu("GetLayout", GLib.Variant("(iias)", (0, -1, [])))[1]
        return [(number, properties) for number, properties, _ in layout[2]]

    def choose(self, title):
        number = next(number for number, properties in self.entries() if properties.get("label") == title)
        self._menu("Event", GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("i", 0), 0)))
