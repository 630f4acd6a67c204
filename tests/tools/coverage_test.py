#!/usr/bin/env python3
"""Tests of the command tools/coverage.py with small source trees."""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = pathlib.Path(__file__).resolve().parents[2] / "tools" / "coverage.py"
FOLDERS = ["values", "engine", "schedule", "app", "companion"]  # each must have at least 95 % of its lines run


class Coverage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.files = []
        for folder in FOLDERS:
            self.add(f"{folder}/whole.cpp", ["work();"] * 20, [1] * 20)
        self.give_reasons("")

    def write(self, path, text):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_text(text, encoding="utf-8")

    def add(self, path, source, counts):
        """Adds a file of these lines; `counts` says how often each line was run, None for a line without code."""
        self.write(path, "\n".join(source) + "\n")
        lines = [{"line_number": number, "count": count, "gcovr/noncode": False, "branches": []}
                 for number, count in enumerate(counts, 1) if count is not None]
        self.files.append({"file": path, "lines": lines})

    def give_reasons(self, text):
        self.write("tools/uncovered.txt", text)

    def check(self, status):
        """Runs the program and expects this exit status. Returns the output."""
        self.write("report.json", json.dumps({"gcovr/format_version": "0.3", "files": self.files}))
        done = subprocess.run([sys.executable, PROGRAM, self.root / "report.json", self.root], capture_output=True,
                              text=True, check=False)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout + done.stderr

    def columns(self, output, name):
        return next(line.split() for line in output.splitlines() if line.split()[:1] == [name])[1:]

    def test_passes_when_everything_was_run(self):
        output = self.check(0)
        self.assertEqual(self.columns(output, "engine/whole.cpp"), ["20", "20", "100.0", "%"])
        self.assertEqual(self.columns(output, "engine/"), ["20", "20", "100.0", "%"])

    def test_passes_at_95_percent_if_the_rest_has_reasons(self):
        self.add("engine/part.cpp", ["work();"] * 19 + ["fail();"], [7] * 18 + [0, 0])
        self.give_reasons("# A remark.\n\n"
                          "engine/part.cpp: work();\nengine/part.cpp: fail();\n  It cannot\n  be reached.\n")
        output = self.check(0)
        self.assertEqual(self.columns(output, "engine/part.cpp"), ["18", "20", "90.0", "%"])
        self.assertEqual(self.columns(output, "engine/"), ["38", "40", "95.0", "%"])
        self.assertIn("engine/part.cpp:20: fail();\n    It cannot be reached.\n", output)

    def test_fails_below_95_percent_in_any_folder_despite_reasons(self):
        for folder in FOLDERS:
            with self.subTest(folder):
                self.setUp()
                self.add(f"{folder}/part.cpp", ["work();"] * 20, [1] * 17 + [0] * 3)
                self.give_reasons(f"{folder}/part.cpp: work();\n" * 3 + "  Because.\n")
                self.assertIn(f"{folder}/: 37 of 40 lines were run; 95 % of them should be", self.check(1))

    def test_fails_when_a_folder_has_no_counts_at_all(self):
        self.files = [file for file in self.files if not file["file"].startswith("schedule/")]
        self.assertIn("schedule/: 0 of 0 lines were run", self.check(1))


    def test_fails_for_a_line_without_a_reason(self):
        self.add("app/part.h", ["work();"] * 39 + ["fail();"], [1] * 39 + [0])
        output = self.check(1)
        self.assertIn("app/part.h:40: fail();\n    NO REASON\n", output)
        self.assertIn("app/part.h:40: is uncovered, and tools/uncovered.txt has no reason for it", output)

    def test_needs_a_reason_for_each_of_two_equal_lines(self):
        self.add("app/part.cpp", ["work();"] * 40, [1] * 38 + [0, 0])
        self.give_reasons("app/part.cpp: work();\n  Because.\n")
        output = self.check(1)
        self.assertIn("app/part.cpp:39: work();\n    Because.\n", output)
        self.assertIn("app/part.cpp:40: work();\n    NO REASON\n", output)

    def test_fails_for_a_reason_whose_line_was_run(self):
        self.give_reasons("app/whole.cpp: work();\n  Because.\n")
        self.assertIn("stale, because no such line is uncovered: app/whole.cpp: work();", self.check(1))

    def test_fails_for_a_reason_whose_line_or_file_is_gone(self):
        self.give_reasons("app/whole.cpp: play();\n  Because.\n\napp/gone.cpp: work();\n  Because.\n")
        output = self.check(1)
        self.assertIn("is uncovered: app/whole.cpp: play();", output)
        self.assertIn("is uncovered: app/gone.cpp: work();", output)

    def test_ignores_lines_of_punctuation(self):
        self.add("engine/part.cpp", ["work();", "{", "}  // here", "});", "return {};", "} else {", "else"],
                 [1, 1, 0, 0, 0, 0, 0])
        output = self.check(1)
        self.assertEqual(self.columns(output, "engine/part.cpp"), ["1", "3", "33.3", "%"])
        self.assertIn("engine/part.cpp:5: return {};", output)
        self.assertIn("engine/part.cpp:6: } else {", output)
        for number in [3, 4, 7]:
            self.assertNotIn(f"engine/part.cpp:{number}:", output)

    def test_lists_files_without_code_and_omits_other_folders(self):
        self.write("engine/names.h", "struct Name;\n")
        self.add("platform/part.cpp", ["fail();"], [0])
        output = self.check(0)
        self.assertEqual(self.columns(output, "engine/names.h"), ["0", "0", "-"])
        self.assertNotIn("platform", output)

    def test_fails_for_a_report_of_other_sources(self):
        self.add("engine/part.cpp", ["work();"], [1, 1])
        self.assertIn("engine/part.cpp has changed since it was built: there is no line 2", self.check(1))

    def test_fails_for_malformed_reasons(self):
        for text in ["app/whole.cpp: work();\n", "  Because.\n", "work();\n  Because.\n",
                     "app/whole.cpp: work();\n  Because.\napp/whole.cpp: work();\n"]:
            with self.subTest(text):
                self.give_reasons(text)
                self.assertIn("coverage.py: tools/uncovered.txt", self.check(1))


if __name__ == "__main__":
    unittest.main()
