#!/usr/bin/env python3
"""Tests check_includes.py: makes small trees with one include against the rules each, and expects the complaint.

usage: check_includes_test.py
"""
import importlib.util
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "tools/check_includes.py"

loading = importlib.util.spec_from_file_location("check_includes", SCRIPT)
check_includes = importlib.util.module_from_spec(loading)
loading.loader.exec_module(check_includes)


class CheckIncludesTest(unittest.TestCase):
    def check(self, files):
        """Runs the script on a tree of these files. Returns its exit status and output."""
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                path = pathlib.Path(folder, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            result = subprocess.run([sys.executable, SCRIPT, folder], capture_output=True, text=True, check=False)
            return result.returncode, result.stdout

    def assert_allowed(self, name, header):
        self.assertEqual(list(check_includes.complaints(name, f"#include {header}\n")), [])

    def assert_forbidden(self, name, header):
        complaints = list(check_includes.complaints(name, f"// A comment.\n#include {header}\n"))
        self.assertEqual(len(complaints), 1, (name, header))
        self.assertIn(f"{name}:2: may", complaints[0])

    def test_the_project_keeps_to_the_rules(self):
        result = subprocess.run([sys.executable, SCRIPT], capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 0, result.stdout)

    def test_each_room_may_include_the_rooms_below_it(self):
        for name, header in [("engine/a.cpp", '"values/b.h"'), ("engine/a.cpp", '"platform/b.h"'),
                             ("app/a.cpp", '"engine/b.h"'), ("app/a.cpp", '"schedule/b.h"'),
                             ("companion/a.cpp", '"engine/b.h"'), ("platform/a.h", '"values/b.h"'),
                             ("platform/qt/a.cpp", '"platform/linux/session/b.h"'), ("platform/qt/a.cpp", "<QWidget>"),
                             ("tests/app/a.cpp", '"companion/b.h"')]:
            self.assert_allowed(name, header)

    def test_no_room_may_include_a_room_beside_or_above_it(self):
        for name, header in [("values/a.h", '"platform/b.h"'), ("platform/a.h", '"engine/b.h"'),
                             ("engine/a.cpp", '"schedule/b.h"'), ("engine/a.cpp", '"app/b.h"'),
                             ("schedule/a.cpp", '"engine/b.h"'), ("schedule/a.cpp", '"app/b.h"'),
                             ("app/a.cpp", '"companion/b.h"'), ("companion/a.cpp", '"app/b.h"'),
                             ("platform/linux/a.cpp", '"engine/b.h"'), ("platform/macos/a.mm", '"app/b.h"'),
                             ("platform/posix/a.cpp", '"platform/linux/b.h"'),
                             ("platform/linux/a.cpp", '"platform/linux/session/b.h"'),
                             ("platform/linux/session/a.cpp", '"platform/qt/b.h"'),
                             ("engine/a.cpp", '"platform/linux/b.h"')]:
            self.assert_forbidden(name, header)

    def test_only_native_layers_may_include_other_libraries(self):
        for name in ["values/a.h", "platform/a.h", "engine/a.cpp", "schedule/a.cpp", "app/a.cpp", "companion/a.cpp"]:
            self.assert_allowed(name, "<string_view>")
            self.assert_forbidden(name, "<unistd.h>")
            self.assert_forbidden(name, "<QString>")

    def test_the_session_layer_may_not_include_qt(self):
        self.assert_allowed("platform/linux/session/a.cpp", "<systemd/sd-bus.h>")
        self.assert_forbidden("platform/linux/session/a.cpp", "<QObject>")

    def test_a_folder_that_is_not_a_room_is_an_error(self):
        status, output = self.check({"app/more/a.cpp": ""})
        self.assertEqual(status, 1)
        self.assertIn("app/more/a.cpp: the folder is not one of the rooms", output)

    def test_files_may_not_include_each_other_in_a_circle(self):
        status, output = self.check({"engine/a.h": "", "engine/a.cpp": '#include "engine/a.h"\n#include "engine/b.h"\n',
                                     "engine/b.h": '#include "engine/c.h"\n', "engine/c.h": '#include "engine/a.h"\n'})
        self.assertEqual(status, 1)
        self.assertIn("circle of includes: engine/a -> engine/b -> engine/c -> engine/a", output)

    def test_an_empty_tree_is_an_error(self):
        self.assertEqual(self.check({"README.md": ""})[0], 1)


if __name__ == "__main__":
    unittest.main()
