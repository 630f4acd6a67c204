"""What is on the screen, found by what an assistive technology is told (AT-SPI 2), and worked with pointer and keys."""
from gi.repository import GLib
from Xlib import X, XK, display
from Xlib.ext import xtest

from session_bus import Bus
from waiting import wait_for

ACCESSIBLE = "org.a11y.atspi.Accessible"
ROOT = "/org/a11y/atspi/accessible/root"
# Numbers of AtspiStateType.
ACTIVE, CHECKED, ENABLED, EXPANDED, SHOWING = 1, 4, 8, 10, 25


class Element:
    """A window, control or text on the screen."""

    def __init__(self, bus, name, path):
        self.bus, self.name, self.path = bus, name, path

    def _property(self, what):
        return self.bus.property(self.name, self.path, ACCESSIBLE, what)

    @property
    def title(self):
        return self._property("Name")

    @property
    def role(self):
        return self.bus.call(self.name, self.path, ACCESSIBLE, "GetRoleName")[0]

    def is_a(self, role, title=None):
        """Whether it has that role and, if one is given, that title; what is not there any more has none."""
        try:
            return self.role == role and (title is None or self.title == title)
        except GLib.Error:
            return False

    def children(self):
        """What is in this, nothing if it is not there any more, such as a list that was closed."""
        try:
            return [Element(self.bus, *child) for child in
                    self.bus.call(self.name, self.path, ACCESSIBLE, "GetChildren")[0]]
        except GLib.Error:
            return []

    def below(self):
        """All that is in this, from the top down."""
        for child in self.children():
            yield child
            yield from child.below()

    def has_state(self, number):
        words = self.bus.call(self.name, self.path, ACCESSIBLE, "GetState")[0]
        return bool(words[number // 32] >> number % 32 & 1)

    def is_checked(self):
        return self.has_state(CHECKED)

    def is_enabled(self):
        return self.has_state(ENABLED)

    def is_expanded(self):
        return self.has_state(EXPANDED)

    def has_selected_text(self):
        return self.bus.call(self.name, self.path, "org.a11y.atspi.Text", "GetNSelections")[0] > 0

    def frame(self):
        """x, y, width and height on the screen, in pixels, y from its top."""
        return self.bus.call(self.name, self.path, "org.a11y.atspi.Component", "GetExtents",
                             GLib.Variant("(u)", (0,)))[0]

    def texts(self):
        """What its labels say, from the top down."""
        return [element.title for element in self.below() if element.is_a("label") and element.title]

    def buttons(self):
        return [element.title for element in self.below() if element.is_a("push button")]

    def find(self, role, title=None):
        """The first control of that role and title, once there is one."""
        def look():
            return next((element for element in self.below() if element.is_a(role, title)), None)
        return wait_for(look, f"a {role} {title or ''}")


class Screen:
    """The screen of a desktop whose applications tell what they show."""

    def __init__(self, display_name, session_bus):
        self.display = display.Display(display_name)
        self.root = self.display.screen().root
        self.accessibility = Bus(session_bus.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0])

    def windows(self, process):
        """The windows that a process shows, none if it does not answer any more."""
        try:
            applications = Element(self.accessibility, "org.a11y.atspi.Registry", ROOT).children()
            own = [one for one in applications if self.accessibility.process_of(one.name) == process]
            return [window for application in own for window in application.children() if window.has_state(SHOWING)]
        except GLib.Error:
            return []

    def window(self, process, matches, what):
        """The window of a process for which `matches` is true, once it is there and has the keyboard."""
        def find():
            try:
                return next((window for window in self.windows(process)
                             if window.has_state(ACTIVE) and matches(window)), None)
            except GLib.Error:  # it went while it was looked at
                return None
        return wait_for(find, what)

    def click(self, x, y, button=1):
        xtest.fake_input(self.display, X.MotionNotify, x=x, y=y)
        xtest.fake_input(self.display, X.ButtonPress, button)
        xtest.fake_input(self.display, X.ButtonRelease, button)
        self.display.sync()

    def press(self, element):
        """Clicks in a control, near its left edge, where a check box has its box. Keys may overtake a click, which the
        window manager looks at first: wait for what it does before you type."""
        x, y, width, height = element.frame()
        self.click(x + min(width // 2, 10), y + height // 2)

    def type(self, *keys):
        """Presses keys, one after the other, named as X names them: "Return", "Escape", "Down", "a"."""
        for key in keys:
            code = self.display.keysym_to_keycode(XK.string_to_keysym(key))
            xtest.fake_input(self.display, X.KeyPress, code)
            xtest.fake_input(self.display, X.KeyRelease, code)
        self.display.sync()

    def has_older_tray(self):
        return self.display.get_selection_owner(self.display.intern_atom("_NET_SYSTEM_TRAY_S0")) != X.NONE

    def viewable(self, matches):
        """The frames of the windows that can be seen and for which `matches` is true; asked of their X class."""
        return list(self._viewable(self.root, matches))

    def _viewable(self, window, matches):
        for child in window.query_tree().children:
            try:
                if child.get_attributes().map_state != X.IsViewable:
                    continue
                name = child.get_wm_class()
                if name and matches(name[1]):
                    geometry = child.get_geometry()
                    corner = self.root.translate_coords(child, 0, 0)
                    yield corner.x, corner.y, geometry.width, geometry.height
                yield from self._viewable(child, matches)
            except Exception as problem:  # Xlib has one class for each; a window may go while it is looked at
                if type(problem).__name__ not in {"BadWindow", "BadDrawable"}:
                    raise

    def paint(self, red, green, blue):
        """Gives the screen's background a colour."""
        self.root.change_attributes(background_pixel=red << 16 | green << 8 | blue)
        self.root.clear_area()
        self.display.sync()
