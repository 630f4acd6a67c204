"""The parts of desktops that the tests can run on: window manager and panel. QUILLERY_TEST_DESKTOP names one of them;
without it, the tests run on Openbox and on a host for status notifiers of their own."""
import dataclasses
import os


@dataclasses.dataclass(frozen=True)
class Shell:
    title: str
    window_manager: tuple
    panel: tuple = ()  # the command of a panel that takes status notifiers; without one, the tests' own host runs
    packages: tuple = ()  # of Debian, whose versions tell what was tried
    environment: dict = dataclasses.field(default_factory=dict)
    settings: dict = dataclasses.field(default_factory=dict)  # texts by paths in the home folder
    socket: str = ""  # of Wayland; empty on X
    raises: bool = True  # false if no program can bring its own window to the front
    closes: bool = True  # false if it ignores requests to close a window that has no close button


PLAIN = "openbox"
# The notifiers' plugin alone, because the other ones of the usual panel wait for services that a container lacks.
LXQT_PANEL = """panels=panel1
[panel1]
plugins=taskbar,statusnotifier
[taskbar]
type=taskbar
[statusnotifier]
type=statusnotifier
"""
SHELLS = {
    PLAIN: Shell("Openbox", ("openbox",), packages=("openbox",)),
    "xfce": Shell("Xfce", ("xfwm4",), ("xfce4-panel", "--disable-wm-check"), ("xfwm4", "xfce4-panel"),
                  {"XDG_CURRENT_DESKTOP": "XFCE", "XFCE_PANEL_MIGRATE_DEFAULT": "1"}),
    "lxqt": Shell("LXQt", ("openbox",), ("lxqt-panel",), ("openbox", "lxqt-panel"), {"XDG_CURRENT_DESKTOP": "LXQt"},
                  {".config/lxqt/panel.conf": LXQT_PANEL}),
    "kwin": Shell("KWin (Plasma's)", ("kwin_x11",), (), ("kwin-x11",),
                  {"XDG_CURRENT_DESKTOP": "KDE", "KDE_SESSION_VERSION": "5"}, closes=False),
    # In a window of the headless X display, so that the tests can press keys and take screenshots.
    "weston": Shell("Weston (Wayland)", ("weston", "--backend=x11-backend.so", "--no-config", "--width=1024",
                                         "--height=768", "--idle-time=0", "--socket=wayland-test"), (),
                    ("weston", "qt6-wayland"), {"QT_QPA_PLATFORM": "wayland", "WAYLAND_DISPLAY": "wayland-test"},
                    socket="wayland-test", raises=False, closes=False),
}


def chosen():
    """The shell that the environment chooses. Raises KeyError if there is none of that name."""
    return SHELLS[os.environ.get("QUILLERY_TEST_DESKTOP", PLAIN)]
