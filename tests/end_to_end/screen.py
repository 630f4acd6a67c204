"""The contents of the screen, read over the interface for assistive technologies (AT-SPI 2), and operated with pointer
and keys."""
import unittest

from gi.repository import GLib
from Xlib import X, display
from Xlib.ext import xtest
from Xlib.protocol import event

from scratch_desktop import Keyboard
from session_bus import Bus
from waiting import wait_for

ACCESSIBLE = "org.a11y.atspi.Accessible"
ROOT = "/org/a11y/atspi/accessible/root"
# Values of AtspiStateType.
ACTIVE, CHECKED, ENABLED, EXPANDED, SELECTED, SHOWING = 1, 4, 8, 10, 23, 25


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
        """Returns true if the element has this role and, if given, this title; false if the element is gone."""
        try:
            return self.role == role and (title is None or self.title == title)
        except GLib.Error:
            return False

    def children(self):
        """The children of the element; none if the element is gone, such as a closed list."""
        try:
            return [Element(self.bus, *child) for child in
                    self.bus.call(self.name, self.path, ACCESSIBLE, "GetChildren")[0]]
        except GLib.Error:
            return []

    def below(self):
        """All descendants, parents first."""
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

    def content(self):
        """The text in a field."""
        return self.bus.call(self.name, self.path, "org.a11y.atspi.Text", "GetText", GLib.Variant("(ii)", (0, -1)))[0]

    def value(self):
        return self.bus.property(self.name, self.path, "org.a11y.atspi.Value", "CurrentValue")

    def frame(self):
        """x, y, width and height on the screen, in pixels; y counts from the top."""
        return self.bus.call(self.name, self.path, "org.a11y.atspi.Component", "GetExtents",
                             GLib.Variant("(u)", (0,)))[0]

    def texts(self):
        """The texts of the labels, in order."""
        return [element.title for element in self.below() if element.is_a("label") and element.title]

    def buttons(self):
        """The titles of the visible buttons, in order."""
        return [element.title for element in self.below() if element.is_a("push button") and element.has_state(SHOWING)]

    def find(self, role, title=None):
        """Waits for a control of this role and title. Returns the first one."""
        def look():
            return next((element for element in self.below() if element.is_a(role, title)), None)
        return wait_for(look, f"a {role} {title or ''}")


class Screen(Keyboard):
    """The screen of a desktop whose applications support accessibility."""

    def __init__(self, display_name, session_bus):
        self.display = display.Display(display_name)
        self.root = self.display.screen().root
        self.accessibility = Bus(session_bus.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0])

    def windows(self, process):
        """The windows that a process shows; none if the process does not reply any more."""
        try:
            applications = Element(self.accessibility, "org.a11y.atspi.Registry", ROOT).children()
            own = [one for one in applications if self.accessibility.process_of(one.name) == process]
            return [window for application in own for window in application.children() if window.has_state(SHOWING)]
        except GLib.Error:
            return []

    def window(self, process, matches, what):
        """Waits for an active window of a process for which `matches` returns true."""
        def find():
            try:
                return next((window for window in self.windows(process)
                             if window.has_state(ACTIVE) and matches(window)), None)
            except GLib.Error:  # the window closed in the meantime
                return None
        return wait_for(find, what)

    def click(self, x, y, button=1):
        xtest.fake_input(self.display, X.MotionNotify, x=x, y=y)
        xtest.fake_input(self.display, X.ButtonPress, button)
        xtest.fake_input(self.display, X.ButtonRelease, button)
        self.display.sync()

    def press(self, element):
        """Clicks a control near its left edge, where a check box has its box. The window manager handles the click
        first, so keys typed at once may arrive before it: wait for the effect of the click before typing."""
        x, y, width, height = element.frame()
        self.click(x + min(width // 2, 10), y + height // 2)

    def choose_last(self, element):
        """Chooses the last item of a combo box."""
        self.press(element)
        wait_for(element.is_expanded, "an open list")
        last = [item for item in element.below() if item.is_a("list item")][-1]

        def select():  # again and again, because an open list may not get the keys yet
            self.type("End")
            return last.has_state(SELECTED)
        wait_for(select, "the last item to be selected")
        self.type("Return")

    def close_active_window(self):
        """Asks the window manager to close the active window, as its close button and Alt+F4 do."""
        active = self.display.intern_atom("_NET_ACTIVE_WINDOW")
        number = self.root.get_full_property(active, X.AnyPropertyType).value[0]
        request = event.ClientMessage(window=number, client_type=self.display.intern_atom("_NET_CLOSE_WINDOW"),
                                      data=(32, [X.CurrentTime, 2, 0, 0, 0]))
        self.root.send_event(request, X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.display.sync()

    def has_window_manager(self):
        return self.root.get_full_property(self.display.intern_atom("_NET_SUPPORTING_WM_CHECK"), X.AnyPropertyType)

    def is_keyboard_grabbed(self):
        """Returns true if all keys go to one program, as while its menu is open. No other program can grab the keyboard
        while this looks."""
        self.display.grab_server()
        status = self.root.grab_keyboard(False, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime)
        if status == X.GrabSuccess:
            self.display.ungrab_keyboard(X.CurrentTime)
        self.display.ungrab_server()
        self.display.sync()
        return status == X.AlreadyGrabbed

    def has_older_tray(self):
        return self.display.get_selection_owner(self.display.intern_atom("_NET_SYSTEM_TRAY_S0")) != X.NONE

    def viewable(self, matches):
        """The frames of the visible windows for whose X class `matches` returns true."""
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
            except Exception as problem:  # a window may close meanwhile; Xlib makes these classes at run time
                if type(problem).__name__ not in {"BadWindow", "BadDrawable"}:
                    raise

    def is_placed(self, window):
        """Returns true if a program knows where the window manager has put its window."""
        return tuple(window.frame()) in self._viewable(self.root, lambda name: True)

    def paint(self, red, green, blue):
        """Sets the background colour of the screen."""
        self.root.change_attributes(background_pixel=red << 16 | green << 8 | blue)
        self.root.clear_area()
        self.display.sync()


class WaylandScreen(Screen):
    """The screen of a Wayland compositor that shows its desktop in a window of the X display. Keys work as on X, but no
    program learns where windows are, so controls are pressed as a screen reader presses them."""

    def press(self, element):
        self.accessibility.call(element.name, element.path, "org.a11y.atspi.Action", "DoAction",
                                GLib.Variant("(i)", (0,)))

    def is_placed(self, window):
        return True

    def viewable(self, matches):
        raise unittest.SkipTest("Wayland lets no program find the menu of another one")
