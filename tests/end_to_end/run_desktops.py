#!/usr/bin/python3
"""Runs the tests of windows, keys and the tray on parts of real desktops, and prints a table of the results.

usage: run_desktops.py INSTALLATION SCREENSHOTS [NAME ...]

NAME is a name in shells.py; without one, all but the tests' own are tried. The log and the screenshots of each
desktop's run go to a folder of its name in SCREENSHOTS.
"""
import collections
import os
import pathlib
import re
import subprocess
import sys

import shells

HERE = pathlib.Path(__file__).resolve().parent
# For the tests on one desktop, even on a busy machine; at its end, they are interrupted as by Control-C, and clean up.
BOUND = ["timeout", "--foreground", "--signal=INT", "1800"]
TESTS = (
    "sort_now_sorts_at_once_if_safari_is_closed",
    "sort_now_quits_safari_sorts_and_reopens_it",
    "cancel_leaves_safari_and_the_file_alone",
    "a_schedule_set_in_its_window_sorts_on_time",
    "the_schedule_needs_a_day_and_escape_discards_edits",
    "the_access_window_closes_once_access_is_granted",
    "cancel_without_access_registers_no_agent",
    "the_menu_has_all_items_in_order",
    "the_about_window_opens_addresses_and_the_backups",
    "the_window_that_is_asked_for_comes_to_the_front",
    "reports_that_backups_cannot_be_opened",
    "an_older_tray_shows_the_icon_and_its_menu",
    "without_a_tray_reopening_shows_the_menu_at_the_pointer",
    "a_second_start_opens_the_first",
    "the_session_bus_starts_the_program",
    "the_quit_action_of_the_session_ends_the_program",
)


def run(name, installation, screenshots):
    """Runs the tests on a desktop. Returns how many had each outcome ("ok", "skipped", "FAIL" or "ERROR")."""
    log = screenshots / name / "tests.log"
    log.parent.mkdir(parents=True, exist_ok=True)
    command = [*BOUND, sys.executable, str(HERE / "end_to_end_test.py"), str(installation), str(log.parent),
               *(f"EndToEndTest.test_{test}" for test in TESTS)]
    with open(log, "w", encoding="utf-8") as output:
        subprocess.run(command, env={**os.environ, "QUILLERY_TEST_DESKTOP": name}, stdout=output, stderr=output)
    text = log.read_text(encoding="utf-8")
    lines = re.findall(r"^test_(\w+) .* \.\.\. (ok|FAIL|ERROR|skipped)(.*)$", text, re.MULTILINE)
    for test, outcome, reason in lines:
        if outcome != "ok":
            print(f"{name}: {test}: {outcome}{reason}", flush=True)
    outcomes = collections.Counter(outcome for _, outcome, _ in lines)
    if outcomes.total() != len(TESTS):  # such as a crash of the tests themselves
        sys.exit(f"{name}: {outcomes.total()} of {len(TESTS)} tests ended; see {log}")
    return outcomes


def version(package):
    return subprocess.run(["dpkg-query", "--show", "--showformat", "${Package} ${Version}", package],
                          stdout=subprocess.PIPE, text=True, check=True).stdout


def main(installation, screenshots, *names):
    names = names or [name for name in shells.SHELLS if name != shells.PLAIN]
    unknown = set(names) - set(shells.SHELLS)
    if unknown:
        sys.exit(f"no desktop is called {', '.join(sorted(unknown))}; there are {', '.join(shells.SHELLS)}")
    rows, has_failed = [], False
    for name in names:
        outcomes = run(name, pathlib.Path(installation), pathlib.Path(screenshots))
        failed = outcomes["FAIL"] + outcomes["ERROR"]
        has_failed |= failed > 0
        shell = shells.SHELLS[name]
        rows.append([shell.title, ", ".join(map(version, shell.packages)), outcomes.total(), outcomes["ok"],
                     outcomes["skipped"], failed])
    print("\n| desktop | versions | tests | passed | skipped | failed |\n|---|---|---|---|---|---|")
    for row in rows:
        print("| " + " | ".join(map(str, row)) + " |")
    return has_failed


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
