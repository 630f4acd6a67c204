"""A program's status item and its menu, read as a panel reads them: over freedesktop.org's StatusNotifierItem and
com.canonical.dbusmenu."""
from gi.repository import GLib

from status_notifier_host import NAME as WATCHER
from waiting import wait_for

ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"


def has_host(bus):
    """Returns true if a panel shows status notifiers."""
    try:
        return bus.property(WATCHER, "/StatusNotifierWatcher", WATCHER, "IsStatusNotifierHostRegistered")
    except GLib.Error:  # nobody owns the name yet
        return False


def item_names(bus):
    """The bus names of all items in the panel. Some panels add the path of the item's object."""
    items = bus.property(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems")
    return [item.partition("/")[0] for item in items]


class StatusItem:
    def __init__(self, bus, name):
        self.bus = bus
        self.name = name
        self.menu_path = bus.property(name, "/StatusNotifierItem", ITEM, "Menu")

    @staticmethod
    def of(bus, process):
        """Waits for the status item of a process."""
        def find():
            try:
                names = (name for name in item_names(bus) if bus.process_of(name) == process)
                return next((StatusItem(bus, name) for name in names), None)
            except GLib.Error:  # the owner of the name has just left the bus
                return None
        return wait_for(find, f"a status item of process {process}")

    def tool_tip(self):
        return self.bus.property(self.name, "/StatusNotifierItem", ITEM, "ToolTip")[2]

    def menu(self):
        """(identifier, properties) of each item of the menu, in order; properties with default values are left out."""
        layout = self.bus.call(self.name, self.menu_path, MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, [])))[1]
        return [child[:2] for child in layout[2]]

    def titles(self):
        """The titles of the menu's items; None for a separator."""
        return [properties.get("label") for _, properties in self.menu()]

    def properties(self, title):
        return next(properties for _, properties in self.menu() if properties.get("label") == title)

    def choose(self, title):
        """Waits for an item of this title and chooses it, without waiting for the command to finish."""
        def find():
            return [identifier for identifier, properties in self.menu() if properties.get("label") == title]
        identifier = wait_for(find, f"a menu item “{title}”")[0]
        arguments = GLib.Variant("(isvu)", (identifier, "clicked", GLib.Variant("i", 0), 0))
        self.bus.send(self.name, self.menu_path, MENU, "Event", arguments)
