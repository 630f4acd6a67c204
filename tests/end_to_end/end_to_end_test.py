#!/usr/bin/python3
"""Runs the installed program on a private desktop, as its user does, beside a stand-in for Safari.

usage: end_to_end_test.py INSTALLATION SCREENSHOTS [EndToEndTest.NAME ...]

INSTALLATION is the folder in which the program is installed; screenshots of its windows and menus go to SCREENSHOTS.
"""
import configparser
import os
import pathlib
import plistlib
import re
import shlex
import signal
import stat
import subprocess
import sys
import tempfile
import time
import unittest

import shells
from bookmarks import SORTED_TITLES, bookmarks_bar, leaf, serialized, titles, unsorted_tree
from desktop import Desktop
from gi.repository import GLib
from quillery import APPLICATION, IDENTIFIER, OBJECT, Quillery
from status_item import StatusItem
from waiting import stays, wait_for

INSTALLATION = pathlib.Path(sys.argv[1]).resolve() if len(sys.argv) > 1 else None
SCREENSHOTS = pathlib.Path(sys.argv[2]).resolve() if len(sys.argv) > 2 else None

SORTED = ("Bookmarks sorted: Folders come first, followed by bookmarks in alphabetical order. You can reopen Safari."
          "\n\nBackup: {}\n")
SORTED_ALERT = ("Folders come first, followed by bookmarks in alphabetical order. You can reopen Safari."
                "\n\nBackup: {}")
ACCESS_HEADING = "Allow access to Safari bookmarks"
ACCESS_REQUIRED = "Full Disk Access Required — Start"
SAFARI_IS_OPEN = "Safari is open"


def tidy(text):
    """A displayed text without its line breaks."""
    return text.replace("\n", " ")


class EndToEndTest(unittest.TestCase):
    maxDiff = None

    def arrange(self, **options):
        self.desktop = self.enterContext(Desktop(INSTALLATION, **options))
        self.before = self.desktop.bookmarks.read_bytes()

    def arrange_with_large_text(self):
        """Arranges a desktop whose user has chosen text of 20 points in the settings of Plasma."""
        self.arrange(environment={"XDG_CURRENT_DESKTOP": "KDE", "KDE_SESSION_VERSION": "5"})
        settings = self.desktop.home / ".config/kdeglobals"
        settings.parent.mkdir(exist_ok=True)
        settings.write_text("[General]\nfont=DejaVu Sans,20,-1,5,50,0,0,0,0,0\n", encoding="utf-8")

    def launch(self, *arguments):
        """Starts the program and waits for its item in the panel."""
        quillery = Quillery(self.desktop, *arguments)
        quillery.item
        return quillery

    def launch_with_agent(self, *arguments):
        """Starts the program for the first time and waits until its login agent is registered, and until the second
        instance, which the registration starts at once, has found the first one and exited."""
        quillery = self.launch(*arguments)
        wait_for(self.agent_log.exists, "the login agent to start")
        wait_for(lambda: self.desktop.processes() == [quillery.process.pid], "one instance")
        return quillery

    # --- Expectations ---

    @property
    def agent_file(self):
        return self.desktop.home / f"Library/LaunchAgents/{IDENTIFIER}.plist"

    @property
    def autostart_entry(self):
        return self.desktop.home / f".config/autostart/{IDENTIFIER}.desktop"

    @property
    def agent_log(self):
        return self.desktop.home / "Library/Logs/Fenwarde/quillery.log"

    def wait_for_sorted(self, expected=None):
        wait_for(lambda: self.desktop.titles() == (expected or SORTED_TITLES), "a sorted bookmark file")

    def expect_untouched(self):
        self.assertEqual(self.desktop.bookmarks.read_bytes(), self.before)
        self.assertEqual(self.desktop.backup_files(), [])

    def expect_one_backup(self, content=None):
        """Expects exactly one backup, with these bytes, which only its owner can read. Returns its path."""
        backups = self.desktop.backup_files()
        self.assertEqual(len(backups), 1)
        self.assertEqual(backups[0].read_bytes(), content or self.before)
        self.assertEqual(stat.S_IMODE(backups[0].stat().st_mode), 0o600)
        self.assertEqual(stat.S_IMODE(backups[0].parent.stat().st_mode), 0o700)
        return backups[0]

    def expect_traces(self, quillery, lines="", has_agent=True, **settings):
        """Expects these traces besides the bookmark file and backups: printed lines, login agent, settings."""
        self.assertEqual(quillery.lines(), lines)
        self.assertEqual(self.autostart_entry.exists(), has_agent)
        self.assertEqual(plistlib.loads(self.agent_file.read_bytes()) if self.agent_file.exists() else None,
                         self.agent() if has_agent else None)
        access = {"bookmarkAccessPreviouslyGranted": True} if has_agent else {}
        self.assertEqual(quillery.defaults(), {**access, **settings})

    def agent(self):
        return {
            "AssociatedBundleIdentifiers": [IDENTIFIER],
            "Label": IDENTIFIER,
            "ProgramArguments": [str(INSTALLATION / "bin/quillery"), "--login"],
            "RunAtLoad": True,
            "StandardErrorPath": str(self.agent_log.parent / "quillery-errors.log"),
            "StandardOutPath": str(self.agent_log),
        }

    def wait_for_lines(self, quillery, lines):
        wait_for(lambda: quillery.lines() == lines, f"the printed lines {lines!r}")

    def picture(self, name, window):
        self.desktop.picture(SCREENSHOTS / f"{name}.png", window)

    def expect_alert(self, quillery, title, message, buttons, picture):
        """Waits for an alert with this title and expects its message and buttons. Returns the alert."""
        alert = quillery.alert(title)
        self.assertEqual([tidy(text) for text in alert.texts()], [title, tidy(message)])
        self.assertEqual(alert.buttons(), buttons)
        self.picture(picture, alert)
        return alert

    # --- Sorting now ---

    def test_sort_now_sorts_at_once_if_safari_is_closed(self):
        self.arrange()
        self.desktop.install_safari()
        quillery = self.launch_with_agent()
        quillery.choose("Sort Now…")
        quillery.alert("Bookmarks sorted")
        self.assertEqual(self.desktop.titles(), SORTED_TITLES)
        backup = self.expect_one_backup()
        alert = self.expect_alert(quillery, "Bookmarks sorted", SORTED_ALERT.format(backup), ["OK"], "alert-sorted")
        quillery.press(alert, "OK")
        wait_for(quillery.has_no_windows, "the alert to close")

        quillery.choose("Sort Now…")
        self.expect_alert(quillery, "Already sorted", "Your Safari bookmarks are already in order.", ["OK"],
                          "alert-already-sorted")
        self.desktop.screen.type("Return")
        wait_for(quillery.has_no_windows, "Return to close the alert")
        self.expect_one_backup()
        self.assertEqual(self.desktop.safari_events(), [])
        self.assertEqual(quillery.quit(), 0)
        self.expect_traces(quillery)

    def test_sort_now_keeps_the_format_of_an_xml_file(self):
        self.arrange()
        self.desktop.write_bookmarks(unsorted_tree(), is_binary=False)
        before = self.desktop.bookmarks.read_bytes()
        quillery = self.launch()
        quillery.choose("Sort Now…")
        quillery.alert("Bookmarks sorted")
        self.assertTrue(self.desktop.bookmarks.read_bytes().startswith(b"<?xml"))
        self.assertEqual(self.desktop.titles(), SORTED_TITLES)
        self.expect_one_backup(before)

    def test_sort_now_quits_safari_sorts_and_reopens_it(self):
        self.arrange()
        self.desktop.start_safari("--adds", "Saved by Safari")
        quillery = self.launch_with_agent()
        quillery.choose("Sort Now…")
        self.expect_alert(
            quillery, SAFARI_IS_OPEN,
            "Quit Safari normally, sort your bookmarks, then reopen Safari. Any Safari save prompt must be resolved "
            "before sorting can continue.", ["Quit Safari, Sort & Reopen", "Retry", "Cancel"], "alert-safari-is-open")
        self.desktop.screen.type("Return")
        wait_for(lambda: self.desktop.safari_events() == ["started", "asked to quit", "quit", "started"],
                 "Safari to quit and reopen")
        saved = unsorted_tree()
        bookmarks_bar(saved)["Children"].append(leaf("Saved by Safari"))
        self.assertEqual(titles(plistlib.loads(self.desktop.bookmarks.read_bytes()))[1],
                         ["BookmarksBar", ["Articles"], ["Recipes", ["Cakes"], "Bread", "Soup"], "Chapter 9",
                          "Chapter 10", "éclairs", "Eggs", "Saved by Safari", "zebra"])
        backup = self.expect_one_backup(serialized(saved))
        self.wait_for_lines(quillery, SORTED.format(backup))
        wait_for(self.desktop.is_safari_running, "a running Safari")
        self.assertTrue(quillery.has_no_windows())
        self.expect_traces(quillery, lines=SORTED.format(backup))

    def test_cancel_leaves_safari_and_the_file_alone(self):
        self.arrange()
        self.desktop.start_safari()
        quillery = self.launch_with_agent()
        quillery.choose("Sort Now…")
        quillery.alert(SAFARI_IS_OPEN)
        self.desktop.screen.type("Escape")
        wait_for(quillery.has_no_windows, "Escape to close the alert")
        self.assertEqual(self.desktop.safari_events(), ["started"])
        self.expect_untouched()
        self.expect_traces(quillery)

    def test_retry_sorts_at_once_if_safari_has_quit_meanwhile(self):
        self.arrange()
        safari = self.desktop.start_safari()
        quillery = self.launch_with_agent()
        quillery.choose("Running — Stop")  # otherwise the quit itself would start a sort
        wait_for(lambda: quillery.status() == "Stopped — Start", "a stopped program")
        quillery.choose("Sort Now…")
        alert = quillery.alert(SAFARI_IS_OPEN)
        quillery.press(alert, "Retry")
        wait_for(lambda: quillery.windows() and quillery.windows()[0].path != alert.path, "the question once more")
        alert = quillery.alert(SAFARI_IS_OPEN)
        safari.send_signal(signal.SIGUSR1)
        wait_for(lambda: not self.desktop.is_safari_running(), "a closed Safari")
        quillery.press(alert, "Retry")
        quillery.alert("Bookmarks sorted")
        self.assertEqual(self.desktop.titles(), SORTED_TITLES)
        self.assertEqual(self.desktop.safari_events(), ["started", "quit"])

    def test_leaves_a_file_that_is_not_a_bookmark_tree_alone(self):
        self.arrange()
        self.desktop.bookmarks.write_bytes(plistlib.dumps({"Title": "Not bookmarks"}))
        self.before = self.desktop.bookmarks.read_bytes()
        quillery = self.launch_with_agent()
        quillery.choose("Sort Now…")
        self.expect_alert(
            quillery, "Bookmarks could not be sorted",
            "Unrecognised Safari bookmark format. No changes made.\n\nIf access is denied, macOS may require Full Disk "
            "Access for the workflow runner in System Settings → Privacy & Security. No permissions are changed "
            "automatically.", ["OK"], "alert-could-not-be-sorted")
        self.expect_untouched()

    # --- Sorting when Safari quits ---

    def test_sorts_one_second_after_the_user_quits_safari(self):
        self.arrange()
        safari = self.desktop.start_safari()
        quillery = self.launch_with_agent()
        safari.send_signal(signal.SIGUSR1)
        wait_for(lambda: not self.desktop.is_safari_running(), "a closed Safari")
        quit_at = time.monotonic()
        self.wait_for_sorted()
        self.assertGreater(time.monotonic() - quit_at, 0.9)
        backup = self.expect_one_backup()
        self.wait_for_lines(quillery, SORTED.format(backup))
        self.assertEqual(self.desktop.safari_events(), ["started", "quit"])
        self.assertTrue(quillery.has_no_windows())
        self.expect_traces(quillery, lines=SORTED.format(backup))

    def test_stop_lasts_over_a_restart_and_a_quit_of_safari(self):
        self.arrange()
        quillery = self.launch_with_agent()
        self.expect_traces(quillery)
        quillery.choose("Running — Stop")
        wait_for(lambda: quillery.status() == "Stopped — Start", "a stopped program")
        self.assertEqual(quillery.quit(), 0)
        self.expect_traces(quillery, sortingPaused=True)

        quillery = self.launch()
        self.assertEqual(quillery.status(), "Stopped — Start")
        safari = self.desktop.start_safari()
        safari.send_signal(signal.SIGUSR1)
        wait_for(lambda: not self.desktop.is_safari_running(), "a closed Safari")
        stays(lambda: self.desktop.bookmarks.read_bytes() == self.before, "an unchanged file", seconds=2)
        self.expect_untouched()
        quillery.choose("Stopped — Start")
        wait_for(lambda: quillery.status() == "Running — Stop", "a running program")
        self.expect_traces(quillery, sortingPaused=False)

    # --- The schedule ---

    def arrange_before_the_minute(self, seconds):
        """Arranges a desktop with a time zone in which the next full minute is this many seconds away. Returns the hour
        and minute that start then."""
        now = int(time.time())
        offset = (60 - seconds - now) % 60
        rules = self.enterContext(tempfile.NamedTemporaryFile("w"))
        rules.write(f"Zone Shifted 0:00:{offset:02} - TST\n")
        rules.flush()
        zones = self.enterContext(tempfile.TemporaryDirectory())
        subprocess.run(["/usr/sbin/zic", "-d", zones, rules.name], check=True)
        self.arrange(environment={"TZ": f":{zones}/Shifted", "XDG_CURRENT_DESKTOP": "GNOME"})
        local = time.gmtime(now + offset + seconds)
        return local.tm_hour, local.tm_min

    def test_a_schedule_set_in_its_window_sorts_on_time(self):
        seconds = 8 if shells.chosen() is shells.SHELLS[shells.PLAIN] else 40  # real panels take long to start
        hour, minute = self.arrange_before_the_minute(seconds)
        self.desktop.start_safari()
        quillery = self.launch_with_agent()
        quillery.choose("Schedule…")
        window = quillery.window("Schedule")
        self.picture("schedule-off", window)
        self.desktop.screen.press(window.find("check box", "Enable scheduled sorting"))
        picker = window.find("spin box", "Time of the scheduled sort")
        wait_for(picker.is_enabled, "an enabled time picker")
        self.desktop.screen.press(picker)
        wait_for(picker.has_selected_text, "a selected hour")
        self.desktop.screen.type(*f"{hour:02}{minute:02}")
        self.picture("schedule", window)
        self.desktop.screen.type("Return")
        wait_for(quillery.has_no_windows, "Return to close the window")
        settings = {"sortOnSafariQuit": True, "scheduleDays": [1, 2, 3, 4, 5, 6, 7], "dailyEnabled": True,
                    "dailyHour": hour, "dailyMinute": minute}
        self.expect_traces(quillery, **settings)
        self.expect_untouched()

        wait_for(lambda: self.desktop.safari_events() == ["started", "asked to quit", "quit", "started"],
                 "Safari to quit and reopen", patience=seconds + 32)
        self.assertEqual(self.desktop.titles(), SORTED_TITLES)
        lines = SORTED.format(self.expect_one_backup())
        self.wait_for_lines(quillery, lines)
        self.assertTrue(quillery.has_no_windows())
        self.expect_traces(quillery, lines=lines, **settings)

    def test_the_schedule_needs_a_day_and_escape_discards_edits(self):
        self.arrange_with_large_text()
        quillery = self.launch_with_agent()
        quillery.choose("Schedule…")
        window = quillery.window("Schedule")
        self.picture("schedule-large-text", window)
        self.desktop.screen.press(window.find("check box", "Enable scheduled sorting"))
        presets = window.find("combo box")
        wait_for(presets.is_enabled, "enabled presets")
        self.desktop.screen.choose_last(presets)
        days = [window.find("check box", f"{day}day")
                for day in ("Sun", "Mon", "Tues", "Wednes", "Thurs", "Fri", "Satur")]
        wait_for(days[0].is_enabled, "enabled check boxes of days")
        for day in days:
            self.desktop.screen.press(day)
            wait_for(lambda: not day.is_checked(), "an unchecked day")
        quillery.press(window, "Save")
        alert = self.expect_alert(quillery, "Choose a day", "Select at least one day for scheduled sorting.", ["OK"],
                                  "alert-choose-a-day")
        quillery.press(alert, "OK")
        quillery.window("Schedule")
        self.desktop.screen.type("Escape")
        wait_for(quillery.has_no_windows, "Escape to close the window")
        self.expect_traces(quillery)

    # --- Safari that does not quit ---

    def test_gives_up_once_if_safari_is_still_open_after_45_seconds(self):
        self.arrange()
        self.desktop.start_safari("--refuses")
        quillery = self.launch_with_agent()
        quillery.choose("Sort Now…")
        quillery.alert(SAFARI_IS_OPEN)
        self.desktop.screen.type("Return")
        wait_for(lambda: self.desktop.safari_events() == ["started", "asked to quit"], "a request to Safari to quit")
        asked_at = time.monotonic()
        wait_for(quillery.windows, "an alert", patience=60)
        waited = time.monotonic() - asked_at
        self.assertTrue(44.5 < waited < 49, f"it waited {waited:.2f} s")
        alert = self.expect_alert(
            quillery, "Safari did not close",
            "Sorting was skipped. Resolve any Safari save prompts and try again. Safari was not force-quit.", ["OK"],
            "alert-safari-did-not-close")
        quillery.press(alert, "OK")
        wait_for(quillery.has_no_windows, "the alert to close")
        stays(quillery.has_no_windows, "no second alert", seconds=1)
        self.assertEqual(self.desktop.safari_events(), ["started", "asked to quit"])
        self.assertTrue(self.desktop.is_safari_running())
        self.expect_untouched()
        self.expect_traces(quillery)
        quillery.choose("Sort Now…")
        quillery.alert(SAFARI_IS_OPEN)

    def test_sigterm_during_a_wait_ends_the_program_in_order(self):
        self.arrange()
        safari = self.desktop.start_safari("--refuses")
        quillery = self.launch_with_agent()
        quillery.choose("Sort Now…")
        quillery.alert(SAFARI_IS_OPEN)
        self.desktop.screen.type("Return")
        wait_for(lambda: self.desktop.safari_events() == ["started", "asked to quit"], "a request to Safari to quit")
        quillery.send_signal(signal.SIGTERM)
        self.assertEqual(quillery.wait(), 0)
        self.expect_traces(quillery)
        self.expect_untouched()
        safari.send_signal(signal.SIGUSR1)
        wait_for(lambda: not self.desktop.is_safari_running(), "a closed Safari")
        self.assertEqual(self.desktop.safari_events(), ["started", "asked to quit", "quit"])
        self.expect_untouched()

    # --- Access ---

    def take_access(self):
        self.desktop.bookmarks.rename(self.desktop.scratch / "elsewhere")

    def grant_access(self):
        (self.desktop.scratch / "elsewhere").rename(self.desktop.bookmarks)

    def expect_help_with_access(self, quillery):
        """Expects that the program has opened the folder of the bookmark file, and has named the file."""
        wait_for(self.desktop.opened, "the opened folder of the bookmark file")
        self.assertEqual(self.desktop.opened(), [str(self.desktop.bookmarks.parent)])
        self.assertEqual(quillery.errors.read_text(encoding="utf-8"),
                         f"quillery: the bookmark file couldn’t be read: {self.desktop.bookmarks}\n")

    def test_the_access_window_closes_once_access_is_granted(self):
        self.arrange(environment={"XDG_CURRENT_DESKTOP": "XFCE"})
        self.take_access()
        quillery = self.launch()
        window = quillery.window("Quillery")
        self.assertEqual([tidy(text) for text in window.texts()], [
            ACCESS_HEADING,
            "Enable Quillery in System Settings → Privacy & Security → Full Disk Access.  This window closes when "
            "access is available. If macOS requests Quit & Reopen, allow it."])
        self.assertEqual(window.buttons(), ["Cancel", "Retry", "Open Settings"])
        self.picture("access", window)
        self.desktop.screen.type("Return")
        self.expect_help_with_access(quillery)
        quillery.press(window, "Retry")
        stays(quillery.windows, "a window that waits for access", seconds=1.5)
        self.expect_traces(quillery, has_agent=False)
        self.grant_access()
        wait_for(quillery.has_no_windows, "the window to close by itself")
        wait_for(self.autostart_entry.exists, "a registered login agent")
        self.assertEqual(quillery.status(), "Running — Stop")
        self.expect_traces(quillery)
        self.expect_untouched()

    def test_lost_access_stops_sorting_until_it_is_granted_again(self):
        self.arrange()
        quillery = self.launch_with_agent()
        self.take_access()
        quillery.choose("Sort Now…")
        wait_for(lambda: quillery.status() == ACCESS_REQUIRED, f"the status “{ACCESS_REQUIRED}”")
        self.expect_traces(quillery)
        quillery.send("Activate", "(a{sv})", {})
        window = quillery.window("Quillery")
        self.assertIn(ACCESS_HEADING, window.texts())
        self.desktop.screen.type("Escape")
        wait_for(quillery.has_no_windows, "Escape to close the window")
        self.assertEqual(quillery.status(), ACCESS_REQUIRED)
        self.grant_access()
        quillery.choose(ACCESS_REQUIRED)
        wait_for(lambda: quillery.status() == "Running — Stop", "a running program")
        self.expect_untouched()

    def test_cancel_without_access_registers_no_agent(self):
        self.arrange()
        self.take_access()
        quillery = self.launch()
        quillery.press(quillery.window("Quillery"), "Cancel")
        wait_for(quillery.has_no_windows, "the window to close")
        wait_for(lambda: quillery.status() == ACCESS_REQUIRED, f"the status “{ACCESS_REQUIRED}”")
        self.expect_traces(quillery, has_agent=False)

    # --- The login agent ---

    def test_only_the_first_run_registers_the_login_agent(self):
        self.arrange()
        quillery = self.launch_with_agent()
        self.expect_traces(quillery)
        self.assertTrue(self.agent_file.read_bytes().startswith(b"<?xml"))
        # RunAtLoad started a second instance, which printed nothing.
        self.assertEqual(self.agent_log.read_text(encoding="utf-8"), "")
        self.assertEqual((self.agent_log.parent / "quillery-errors.log").read_text(encoding="utf-8"), "")
        self.assertEqual(quillery.quit(), 0)

        before = [self.identity(path) for path in (self.agent_file, self.autostart_entry)]
        quillery = self.launch()
        quillery.choose("About Quillery…")
        quillery.window("About Quillery")  # the setup is done, because commands run after it
        self.assertEqual([self.identity(path) for path in (self.agent_file, self.autostart_entry)], before)
        self.assertEqual(quillery.errors.read_text(encoding="utf-8"), "")

    @staticmethod
    def identity(path):
        status = path.stat()
        return status.st_ino, status.st_mtime_ns, path.read_bytes()

    def test_a_login_start_exits_if_an_instance_is_running(self):
        self.arrange()
        quillery = self.launch_with_agent()
        second = Quillery(self.desktop, "--login")
        self.assertEqual(second.wait(), 0)
        self.assertEqual(second.lines(), "")
        self.assertEqual(second.errors.read_text(encoding="utf-8"), "")
        self.assertEqual(quillery.status(), "Running — Stop")
        self.expect_traces(quillery)
        self.expect_untouched()

    def test_a_login_start_without_another_instance_runs(self):
        self.arrange()
        quillery = self.launch_with_agent("--login")
        self.assertEqual(quillery.status(), "Running — Stop")

    def test_a_program_started_at_login_logs_each_event_in_a_line_with_its_time(self):
        self.arrange()
        self.assertEqual(self.launch_with_agent().quit(), 0)
        program = self.desktop.start(str(INSTALLATION / "libexec/quillery/quillery-launchctl"), "run",
                                     str(self.agent_file))
        StatusItem.of(self.desktop.bus, program.pid)
        self.desktop.start_safari().terminate()
        self.wait_for_sorted()
        event = SORTED.format(self.expect_one_backup()).replace("\n\n", " ")
        wait_for(lambda: self.agent_log.read_text(encoding="utf-8"), "a line in the log")
        self.assertRegex(self.agent_log.read_text(encoding="utf-8"),
                         rf"\A\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d {re.escape(event)}\Z")

    def test_the_locale_of_the_session_is_remembered(self):
        self.arrange(environment={"LANG": "sv_SE.UTF-8"})
        self.assertEqual(self.launch().defaults()["sessionLocale"], "sv_SE")

    def test_reports_once_that_the_login_agent_cannot_be_loaded(self):
        self.arrange()
        (self.desktop.home / ".config").mkdir()
        (self.desktop.home / ".config/autostart").write_text("in the way", encoding="utf-8")
        quillery = self.launch()
        alert = self.expect_alert(
            quillery, "Login setup failed", "Could not enable automatic sorting. Please reopen the installed app.",
            ["OK"], "alert-login-setup-failed")
        quillery.press(alert, "OK")
        wait_for(quillery.has_no_windows, "the alert to close")
        self.assertEqual(quillery.status(), "Running — Stop")

    def test_on_a_disk_image_asks_to_be_installed_and_exits(self):
        self.arrange()
        mount = ["bwrap", "--dev-bind", "/dev", "/dev", "--bind", str(INSTALLATION), "/Volumes/Quillery"]
        for name in sorted(set(os.listdir("/")) - {"dev", "Volumes"}):
            path = pathlib.Path("/", name)
            mount += (["--symlink", os.readlink(path), str(path)] if path.is_symlink() else
                      ["--dev-bind", str(path), str(path)] if path.is_dir() else [])
        trial = subprocess.run([*mount, "true"], stderr=subprocess.PIPE, text=True)
        if trial.returncode != 0:
            self.skipTest(f"no permission to mount: {trial.stderr.strip()}")
        quillery = Quillery(self.desktop, program=[*mount, "/Volumes/Quillery/bin/quillery"])
        self.expect_alert(quillery, "Install the app first",
                          "Drag the app into Applications, then open the installed copy.", ["OK"],
                          "alert-install-the-app-first")
        self.desktop.screen.type("Return")
        self.assertEqual(quillery.wait(), 0)
        self.assertFalse(self.agent_file.exists())

    # --- Commands, windows and the panel ---

    def test_the_menu_has_all_items_in_order(self):
        self.arrange()
        quillery = self.launch_with_agent()
        self.assertEqual(quillery.item.titles(), [
            "About Quillery…", None, "Running — Stop", "Sort Now…", "Schedule…", None, "Check for Updates…",
            "Check for Updates Automatically", "Website", None, "Quit"])
        self.assertEqual(quillery.item.tool_tip(), "Quillery")
        # Choosing one of these would contact the maker's server; update_test.py does that with its own.
        self.assertIs(quillery.item.properties("Check for Updates…")["enabled"], True)
        self.assertEqual(quillery.item.properties("Check for Updates Automatically")["toggle-state"], 0)

    def test_the_about_window_opens_addresses_and_the_backups(self):
        self.arrange()
        quillery = self.launch_with_agent()
        quillery.choose("About Quillery…")
        window = quillery.window("About Quillery")
        self.picture("about", window)
        for title in ("Website", "Support", "Open Backups"):
            count = len(self.desktop.opened())
            quillery.press(window, title)
            wait_for(lambda: len(self.desktop.opened()) == count + 1, f"“{title}” to open something")
        self.assertEqual(self.desktop.opened(), [
            "https://quillery.example.com/", "mailto:support@quillery.example.com?subject=Quillery",
            str(self.desktop.backups)])
        self.assertTrue(self.desktop.backups.is_dir())

    def test_the_window_that_is_asked_for_comes_to_the_front(self):
        self.arrange()
        if not self.desktop.shell.raises:
            self.skipTest(f"{self.desktop.shell.title} lets no program raise its window")
        quillery = self.launch_with_agent()
        for title in ("Schedule", "About Quillery", "Schedule"):
            quillery.choose(f"{title}…")
            self.assertEqual(quillery.window(title).role, "dialog")
        self.assertEqual(len(quillery.windows()), 2)
        if not self.desktop.shell.closes:
            self.skipTest(f"until here it passed; {self.desktop.shell.title} closes only windows with a close button")
        self.desktop.screen.close_active_window()
        quillery.window("About Quillery")
        self.assertEqual(len(quillery.windows()), 1)

    def test_reports_that_backups_cannot_be_opened(self):
        self.arrange()
        self.desktop.backups.parent.mkdir(parents=True)
        self.desktop.backups.write_text("in the way", encoding="utf-8")
        quillery = self.launch_with_agent()
        quillery.choose("About Quillery…")
        quillery.press(quillery.window("About Quillery"), "Open Backups")
        alert = quillery.alert("Cannot open backups")
        self.picture("alert-cannot-open-backups", alert)
        quillery.press(alert, "OK")
        quillery.window("About Quillery")

    def test_an_older_tray_shows_the_icon_and_its_menu(self):
        self.arrange(panel="older tray")
        quillery = Quillery(self.desktop)
        _, y, _, height = quillery.open_menu_in_older_tray()
        self.desktop.screenshot(SCREENSHOTS / "menu.png", (640, 0, 384, y + height + 16))
        self.desktop.screen.type("Down", "Return")
        quillery.window("About Quillery")

    def test_without_a_tray_reopening_shows_the_menu_at_the_pointer(self):
        self.arrange(panel=None)
        quillery = Quillery(self.desktop)
        wait_for(self.autostart_entry.exists, "a registered login agent")
        quillery.send("Activate", "(a{sv})", {})
        x, y, _, _ = quillery.wait_for_menu()
        self.assertLess(max(abs(x - 512), abs(y - 384)), 8)  # the pointer starts in the middle of the screen
        self.desktop.screen.type("Down", "Return")
        quillery.window("About Quillery")
        self.assertEqual(quillery.errors.read_text(encoding="utf-8"),
                         "quillery: no system tray; opening the program again shows its menu\n")

    def test_a_second_start_opens_the_first(self):
        self.arrange(panel=None)
        quillery = Quillery(self.desktop)
        wait_for(self.agent_log.exists, "the login agent to start")
        wait_for(lambda: self.desktop.processes() == [quillery.process.pid], "one instance")
        second = Quillery(self.desktop)
        self.assertEqual(second.wait(), 0)
        quillery.wait_for_menu()
        self.assertEqual(self.desktop.processes(), [quillery.process.pid])

    def test_wakes_the_processor_at_most_once_an_idle_minute(self):
        self.arrange(has_accessibility=False)
        quillery = self.launch_with_agent()
        self.assertLessEqual(quillery.wakes_in_an_idle_minute(), 1)

    def wait_for_started_by_others(self):
        """Waits for the item of a program that the bus or a launcher has started, and lets the program quit."""
        process = wait_for(self.desktop.processes, "a started program")[0]
        self.addCleanup(self.desktop.end, process)
        self.assertEqual(StatusItem.of(self.desktop.bus, process).titles()[-1], "Quit")

    def test_the_session_bus_starts_the_program(self):
        self.arrange()
        self.desktop.bus.send(IDENTIFIER, OBJECT, APPLICATION, "Activate", GLib.Variant("(a{sv})", ({},)))
        self.wait_for_started_by_others()

    def test_a_menu_starts_the_program_by_its_identifier(self):
        self.arrange()
        launcher = (f"from gi.repository import Gio; Gio.DesktopAppInfo.new('{IDENTIFIER}.desktop').launch([], None);"
                    "Gio.bus_get_sync(Gio.BusType.SESSION).flush_sync()")
        subprocess.run([sys.executable, "-c", launcher], env=self.desktop.environment, check=True)
        self.wait_for_started_by_others()

    def test_the_entry_starts_the_program_without_the_bus(self):
        self.arrange()
        entry = configparser.RawConfigParser()
        entry.read(INSTALLATION / f"share/applications/{IDENTIFIER}.desktop")
        command = entry["Desktop Entry"]["Exec"]
        self.assertEqual([entry["Desktop Entry"]["TryExec"]], shlex.split(command))
        Quillery(self.desktop, program=["/bin/sh", "-c", f"{command} & wait"]).item

    def test_the_quit_action_of_the_session_ends_the_program(self):
        self.arrange()
        quillery = self.launch_with_agent()
        quillery.send("ActivateAction", "(sava{sv})", "quit", [], {})
        self.assertEqual(quillery.wait(), 0)
        self.expect_untouched()


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
