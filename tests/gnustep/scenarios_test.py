#!/usr/bin/python3
"""The scenarios of tests/end_to_end that the macOS layer can run over GNUstep, and those of its own.

usage: scenarios_test.py BUILD [--failfast] [MacEndToEndTest.NAME ...]
"""
import pathlib
import plistlib
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "end_to_end")]
INSTALLATION = pathlib.Path(sys.argv[1]).resolve() / "Quillery.app"
sys.argv[1:2] = [str(INSTALLATION), "/nonexistent"]

import end_to_end_test as shared  # noqa: E402
import mac_desktop  # noqa: E402
from waiting import wait_for  # noqa: E402

shared.Desktop = mac_desktop.Desktop
shared.Quillery = mac_desktop.Quillery

SHARED = """
    test_sort_now_sorts_at_once_if_safari_is_closed
    test_sort_now_keeps_the_format_of_an_xml_file
    test_sort_now_quits_safari_sorts_and_reopens_it
    test_cancel_leaves_safari_and_the_file_alone
    test_retry_sorts_at_once_if_safari_has_quit_meanwhile
    test_leaves_a_file_that_is_not_a_bookmark_tree_alone
    test_sorts_one_second_after_the_user_quits_safari
    test_stop_lasts_over_a_restart_and_a_quit_of_safari
    test_the_access_window_closes_once_access_is_granted
    test_cancel_without_access_registers_no_agent
    test_the_schedule_needs_a_day_and_escape_discards_edits
    test_the_about_window_opens_addresses_and_the_backups
    test_reports_that_backups_cannot_be_opened
""".split()


class MacEndToEndTest(shared.EndToEndTest):
    def picture(self, name, window):
        """No-op: pixels prove nothing here."""

    @property
    def loaded(self):
        return self.desktop.rig / "loaded"

    def launch_with_agent(self, *arguments):
        quillery = self.launch(*arguments)
        wait_for(self.loaded.exists, "a loaded login agent")
        return quillery

    @property
    def autostart_entry(self):
        return self.loaded

    def expect_traces(self, quillery, lines="", has_agent=True, **settings):
        self.assertEqual(quillery.lines(), lines)
        self.assertEqual(self.agent_file.exists(), has_agent)
        self.assertEqual(self.loaded.exists(), has_agent)
        if has_agent:
            self.assertEqual(plistlib.loads(self.agent_file.read_bytes()), self.agent())

    def expect_help_with_access(self, quillery):
        wait_for(lambda: len(self.desktop.opened()) == 2, "the program and the settings to be opened")
        self.assertEqual(self.desktop.opened(), [
            str(self.desktop.installation.parent),
            "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles"])

    def settings(self):
        return plistlib.loads((self.desktop.home / "GNUstep/Defaults/quillery.plist").read_bytes())

    def test_a_schedule_saved_with_its_window_is_stored(self):
        self.arrange()
        quillery = self.launch_with_agent()
        quillery.choose("Schedule…")
        window = quillery.window("Schedule")
        box = window.find("check box", "Enable scheduled sorting")
        self.assertFalse(window.find("combo box").is_enabled())
        self.desktop.screen.press(box)
        wait_for(box.is_checked, "a checked box")
        wait_for(window.find("combo box").is_enabled, "enabled days")
        self.desktop.screen.type("Return")
        wait_for(quillery.has_no_windows, "Return to close the window")
        quillery.choose("Schedule…")
        window = quillery.window("Schedule")
        self.assertTrue(window.find("check box", "Enable scheduled sorting").is_checked())
        quillery.press(window, "Cancel")
        wait_for(quillery.has_no_windows, "Cancel to close the window")
        self.assertEqual(quillery.quit(), 0)
        settings = self.settings()
        self.assertEqual(settings["scheduleDays"], [1, 2, 3, 4, 5, 6, 7])
        self.assertTrue(settings["dailyEnabled"])

    def test_days_chosen_by_keys_are_stored(self):
        self.arrange()
        quillery = self.launch_with_agent()
        quillery.choose("Schedule…")
        window = quillery.window("Schedule")
        box = window.find("check box", "Enable scheduled sorting")
        self.desktop.screen.reach(box)
        self.desktop.screen.type("space")
        wait_for(box.is_checked, "a checked box")
        presets = window.find("combo box")
        wait_for(presets.is_enabled, "enabled presets")
        self.desktop.screen.choose_last(presets)
        tuesday = window.find("check box", "Tuesday")
        wait_for(tuesday.is_enabled, "enabled check boxes of days")
        self.desktop.screen.reach(tuesday)
        self.desktop.screen.type("space")
        wait_for(lambda: not tuesday.is_checked(), "an unchecked Tuesday")
        self.desktop.screen.type("Return")
        wait_for(quillery.has_no_windows, "Return to close the window")
        self.assertEqual(quillery.quit(), 0)
        self.assertEqual(self.settings()["scheduleDays"], [1, 2, 4, 5, 6, 7])

    def test_quits_while_an_alert_is_shown(self):
        self.arrange()
        quillery = self.launch_with_agent()
        quillery.choose("Sort Now…")
        quillery.alert("Bookmarks sorted")
        self.assertEqual(quillery.quit(), 0)

    def agent(self):
        return {**super().agent(), "ProgramArguments": [str(INSTALLATION / "quillery"), "--login"]}


for name in [name for name in dir(shared.EndToEndTest) if name.startswith("test_") and name not in SHARED]:
    setattr(MacEndToEndTest, name, None)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], defaultTest="MacEndToEndTest", verbosity=2)
