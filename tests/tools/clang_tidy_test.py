#!/usr/bin/env python3
"""Tests how clang_tidy.py joins sources. Runs no clang-tidy.

usage: clang_tidy_test.py
"""
import importlib.util
import pathlib
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "tools/clang_tidy.py"

loading = importlib.util.spec_from_file_location("clang_tidy", SCRIPT)
clang_tidy = importlib.util.module_from_spec(loading)
loading.loader.exec_module(clang_tidy)

HEAD = '// A comment.\n#include <string>\n#include "a.h"\n\n'


class ClangTidyTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, name, text):
        path = self.folder / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path

    def command(self, name, text, options="-O1"):
        path = self.file(name, text)
        return {"file": str(path), "command": f"clang++ {options} -o {path.name}.o -c {path}"}

    def names(self, commands):
        batches = clang_tidy.batches_of(commands)
        return [[pathlib.Path(command["file"]).name for command in batch] for batch in batches]

    def test_each_header_comes_once_before_all_sources(self):
        text = clang_tidy.joined([self.file("a.cpp", HEAD + "int a;\n"), self.file("b.cpp", HEAD + "int b;\n")])
        self.assertEqual(text, '#include <string>\n#include "a.h"\nint a;\nint b;\n')

    def test_an_include_after_the_first_code_stays_in_its_place(self):
        text = "#include <string>\n#ifdef __APPLE__\n#include <crt_externs.h>\n#endif\n"
        self.assertEqual(clang_tidy.joined([self.file("a.cpp", text)]), text)

    def test_tests_are_in_a_namespace_each(self):
        files = [self.file(name, "TEST(A, b) {}\n") for name in ("a.cpp", "b.cpp")]
        self.assertEqual(clang_tidy.joined(files),
                         "namespace source0 {\nTEST(A, b) {}\n}\nnamespace source1 {\nTEST(A, b) {}\n}\n")

    def test_sources_of_a_folder_with_one_command_are_joined(self):
        commands = [self.command(name, "int a;\n") for name in ("x/b.cpp", "x/a.cpp", "y/c.cpp")]
        commands.append(self.command("x/d.cpp", "int a;\n", "-O2"))
        self.assertCountEqual(self.names(commands), [["a.cpp", "b.cpp"], ["c.cpp"], ["d.cpp"]])

    def test_programs_and_support_of_tests_are_not_joined_with_others(self):
        commands = [self.command("a.cpp", "int a;\n"), self.command("b.cpp", "int main() {\n}\n"),
                    self.command("c.cpp", "int LLVMFuzzerTestOneInput(int a) {\n}\n"),
                    self.command("d.cpp", "TEST(A, b) {\n}\n")]
        self.assertCountEqual(self.names(commands), [["a.cpp"], ["b.cpp"], ["c.cpp"], ["d.cpp"]])

    def test_many_sources_make_batches_of_equal_size(self):
        commands = [self.command(f"{number:02}.cpp", "int a;\n") for number in range(26)]
        self.assertEqual(list(map(len, self.names(commands))), [9, 9, 8])

    def test_a_change_of_any_source_or_header_changes_the_key(self):
        batch = [self.command("a.cpp", HEAD), self.command("b.cpp", "")]
        keys = set()
        for name, text in (("a.h", ""), ("a.h", "int a;"), ("a.cpp", HEAD + "//"), ("b.cpp", "//")):
            self.file(name, text)
            keys.add(clang_tidy.key_of(clang_tidy.Sources(self.folder), batch, b""))
        self.assertEqual(len(keys), 4)


if __name__ == "__main__":
    unittest.main()
