#!/usr/bin/env python3
"""Tests of the shells' completions for "quilleryctl", and that help, completions and manual page are complete.

usage: completions_test.py QUILLERYCTL BUILD_FOLDER
"""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
COMPLETIONS = REPOSITORY / "packaging" / "completions"
COMMANDS = ["backups", "check", "next", "preview", "restore", "sort", "undo"]
OPTIONS = {
    "preview": ["--all", "--color", "--json", "--quiet"],
    "sort": ["--color", "--dry-run", "--output", "--quiet"],
    "check": ["--color", "--json", "--quiet"],
    "backups": ["--color", "--json", "--quiet"],
    "restore": ["--color", "--foreign", "--quiet"],
    "undo": ["--color", "--quiet"],
    "next": ["--color", "--json", "--quiet"],
}
BACKUPS = ["Bookmarks-A.plist", "Bookmarks-B.plist"]


def run(arguments, **options):
    return subprocess.run(arguments, capture_output=True, text=True, check=True, **options).stdout


class Completions(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="quillery-completions-")
        self.addCleanup(scratch.cleanup)
        home = pathlib.Path(scratch.name)
        self.backups = home / "Library/Application Support/Quillery/Backups"
        self.backups.mkdir(parents=True)
        for name in BACKUPS:
            (self.backups / name).touch()
        self.folder = home / "here"
        self.folder.mkdir()
        (self.folder / "Other.plist").touch()
        # Shells store their own state in these folders.
        kept = {name: str(home) for name in ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME")}
        path = f"{COMPANION.parent}:{os.environ['PATH']}"
        self.environment = dict(os.environ, PATH=path, LANG="C.UTF-8",
                                DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent", **kept)

    def shell(self, arguments):
        return run(arguments, env=self.environment, cwd=self.folder)

    def bash(self, *words, separator=None):
        script = """source "$1"; shift; COMP_WORDS=(quilleryctl "$@"); COMP_CWORD=$#; _quilleryctl
                    printf '%s\\n' "${COMPREPLY[@]}" """
        output = self.shell(["bash", "--norc", "-c", script, "bash", COMPLETIONS / "quilleryctl.bash", *words])
        return sorted(output.strip().split(separator))

    def fish(self, *words):
        if not shutil.which("fish"):
            self.skipTest("fish is not installed")
        completions = shlex.quote(str(COMPLETIONS / "quilleryctl.fish"))
        script = f"source {completions}; complete -C 'quilleryctl {' '.join(words)}'"
        lines = self.shell(["fish", "--no-config", "-c", script]).splitlines()
        return sorted(line.split("\t")[0] for line in lines)

    def zsh(self, state, *line):
        """The words passed to zsh's completion functions in this state of the command line, one per line."""
        if not shutil.which("zsh"):
            self.skipTest("zsh is not installed")
        script = f"""for name in _arguments _files; do
                       functions[$name]='print -rl -- $0 "$@"; state={state}; line=({" ".join(line)})'
                     done
                     _describe() {{ print -rl -- _describe "${{(@P)@[-1]}}" }}
                     source {shlex.quote(str(COMPLETIONS / "quilleryctl.zsh"))}"""
        return self.shell(["zsh", "-f", "-c", script]).splitlines()

    def test_bash_offers_commands(self):
        self.assertEqual(self.bash(""), COMMANDS)
        self.assertEqual(self.bash("--quiet", "s"), ["sort"])

    def test_bash_offers_the_options_of_each_command(self):
        self.assertEqual(self.bash("-"), ["--help", "--version"])
        for command, options in OPTIONS.items():
            self.assertEqual(self.bash(command, "--"), sorted([*options, "--help"]))
        self.assertEqual(self.bash("sort", "--color", ""), ["always", "auto", "never"])
        self.assertEqual(self.bash("sort", "-o", "O"), ["Other.plist"])

    def test_bash_offers_files_where_a_command_takes_one(self):
        for words in (["preview"], ["sort"], ["sort", "x"], ["check", "-q"], ["backups"], ["undo"], ["restore", "x"]):
            self.assertEqual(self.bash(*words, "O"), ["Other.plist"])
        for words in (["next"], ["undo", "x"], ["restore", "x", "y"]):
            self.assertEqual(self.bash(*words, "O"), [])

    def test_bash_offers_backups_or_paths_for_restore(self):
        self.assertEqual(self.bash("restore", ""), BACKUPS)
        self.assertEqual(self.bash("restore", "--quiet", "Bookmarks-B"), BACKUPS[1:])
        self.assertEqual(self.bash("restore", "./O"), ["./Other.plist"])

    def test_executes_no_command_in_the_name_of_a_backup(self):
        hostile = "Bookmarks-$(touch obeyed) `touch obeyed`;touch obeyed.plist"
        (self.backups / hostile).touch()
        self.bash("restore", "")
        offered = self.bash("restore", "Bookmarks-$", separator="\n")
        self.assertEqual([shlex.split(word) for word in offered], [[hostile]])
        self.assertIn(hostile, self.fish("restore", "B"))
        self.assertFalse((self.folder / "obeyed").exists())

    def test_fish_offers_commands(self):
        self.assertEqual(self.fish(""), COMMANDS)
        self.assertEqual(self.fish("so"), ["sort"])

    def test_fish_offers_the_options_of_each_command(self):
        self.assertEqual(self.fish("--"), ["--help", "--version"])
        for command, options in OPTIONS.items():
            self.assertEqual(self.fish(command, "--"), sorted([*options, "--help"]))
        self.assertEqual(self.fish("sort", "--color", "a"), ["always", "auto"])
        self.assertEqual(self.fish("sort", "-o", "O"), ["Other.plist"])

    def test_fish_offers_files_and_backups(self):
        for command in ("preview", "sort", "check", "backups", "undo"):
            self.assertEqual(self.fish(command, "O"), ["Other.plist"])
        self.assertEqual(self.fish("next", "O"), [])
        self.assertEqual(self.fish("restore", "B"), BACKUPS)

    def test_zsh_offers_commands(self):
        offered = self.zsh("command")
        self.assertEqual(sorted(line.split(":")[0] for line in offered[offered.index("_describe") + 1:]), COMMANDS)

    def test_zsh_offers_the_options_of_each_command(self):
        def options(command):
            offered = self.zsh("arguments", command)
            last = len(offered) - offered[::-1].index("_arguments")
            return sorted(set(re.findall(r"(?m)(?:^|\))(--[a-z-]+)\[", "\n".join(offered[last:]))))

        for command, expected in OPTIONS.items():
            self.assertEqual(options(command), sorted(expected))

    def test_zsh_offers_files_and_backups(self):
        for command in ("backups", "undo"):
            self.assertIn("1:bookmark file:_files", self.zsh("arguments", command))
        for command in ("preview", "sort", "check"):
            self.assertIn("*:bookmark file:_files", self.zsh("arguments", command))
        self.assertIn("1:backup:_quilleryctl_backups", self.zsh("arguments", "restore"))
        self.assertIn("2:bookmark file:_files", self.zsh("arguments", "restore"))


class Descriptions(unittest.TestCase):
    """Every command and option of the program is in its help, its completions and its manual page."""

    def setUp(self):
        self.help = run([COMPANION, "--help"])
        self.commands = sorted(set(re.findall(r"quilleryctl (\w+)", self.help)))
        self.options = sorted(set(re.findall(r"--[a-z-]+", self.help)))

    def test_the_help_has_all_commands_and_options(self):
        self.assertEqual(self.commands, COMMANDS)
        self.assertEqual(self.options, ["--all", "--color", "--dry-run", "--foreign", "--help", "--json", "--output", "--quiet",
                                        "--version"])

    def test_the_completions_have_all_commands_and_options(self):
        for shell in ("bash", "zsh", "fish"):
            text = (COMPLETIONS / f"quilleryctl.{shell}").read_text()
            for command in self.commands:
                self.assertRegex(text, rf"\b{command}\b", shell)
            for option in self.options:
                name = rf"-l {option[2:]}\b" if shell == "fish" else option
                self.assertRegex(text, name, shell)

    def test_the_manual_page_has_all_and_the_exit_statuses(self):
        page = (BUILD / "packaging/linux/quilleryctl.1").read_text().replace("\\-", "-")
        for command in self.commands:
            self.assertRegex(page, rf"(?m)^\.B quilleryctl {command}$")
            self.assertRegex(page, rf"(?m)^\.TP\n\.B {command}$")
        for option in self.options:
            self.assertIn(option, page)
        statuses = re.findall(r"(?:^|; (?:or for check: )?)(\d+) ", self.help[self.help.index("Exit status: ") + 13:])
        section = page[page.index(".SH EXIT STATUS"):page.index(".SH ENVIRONMENT")]
        self.assertEqual(re.findall(r"(?m)^\.B (\d+)$", section), ["0", "1", "2", "3", "74", "75"])
        self.assertEqual(statuses, ["0", "1", "2", "3", "74", "75"])

    def test_the_manual_page_formats_without_warnings(self):
        if not shutil.which("man"):
            self.skipTest("man is not installed")
        result = subprocess.run(["man", "--warnings", "-l", BUILD / "packaging/linux/quilleryctl.1"], text=True,
                                capture_output=True, env=dict(os.environ, LC_ALL="C.UTF-8", MANWIDTH="80", PAGER="cat"))
        self.assertEqual(result.stderr, "")


COMPANION, BUILD = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
