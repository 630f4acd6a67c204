#!/usr/bin/env python3
"""Tests which sources clang_tidy.py joins, and when it checks them again. Runs no clang-tidy.

usage: clang_tidy_test.py
"""
import pathlib
import unittest

from scratch_sources import HEAD, ScratchSources  # first, because it sets the path of the tools
import clang_tidy


class ClangTidyTest(ScratchSources):
    def command(self, name, text, options="-O1"):
        path = self.file(name, text)
        return {"file": str(path), "command": f"clang++ {options} -o {path.name}.o -c '{path}'"}

    def names(self, commands):
        batches = clang_tidy.batches_of(commands)
        return [[pathlib.Path(command["file"]).name for command in batch] for batch in batches]

    def test_sources_of_a_folder_with_one_command_are_joined(self):
        commands = [self.command(name, "int a;\n") for name in ("x/b.cpp", "x/a.cpp", "y/c.cpp")]
        commands.append(self.command("x/d.cpp", "int a;\n", "-DX"))
        self.assertCountEqual(self.names(commands), [["a.cpp", "b.cpp"], ["c.cpp"], ["d.cpp"]])

    def test_a_space_in_a_path_makes_no_difference(self):
        commands = [self.command(f"a folder/{name}", "int a;\n") for name in ("a.cpp", "b.cpp")]
        self.assertEqual(self.names(commands), [["a.cpp", "b.cpp"]])

    def test_tests_of_all_folders_are_joined(self):
        commands = [self.command(name, "TEST(A, b) {\n}\n") for name in ("x/a.cpp", "y/b.cpp")]
        self.assertEqual(self.names(commands), [["a.cpp", "b.cpp"]])

    def test_optimisation_does_not_matter(self):
        commands = [self.command("a.cpp", "int a;\n"), self.command("b.cpp", "int b;\n", "-O2")]
        self.assertEqual(self.names(commands), [["a.cpp", "b.cpp"]])

    def test_programs_and_support_of_tests_are_not_joined_with_others(self):
        commands = [self.command("a.cpp", "int a;\n"), self.command("b.cpp", "int main() {\n}\n"),
                    self.command("c.cpp", "int LLVMFuzzerTestOneInput(int a) {\n}\n"),
                    self.command("d.cpp", "TEST(A, b) {\n}\n")]
        self.assertCountEqual(self.names(commands), [["a.cpp"], ["b.cpp"], ["c.cpp"], ["d.cpp"]])

    def test_many_sources_make_batches_of_equal_size(self):
        commands = [self.command(f"{number:02}.cpp", "int a;\n") for number in range(26)]
        self.assertEqual(list(map(len, self.names(commands))), [9, 9, 8])

    def test_a_source_that_lacks_an_include_does_not_compile_alone(self):
        self.file("a.h", "struct A {};\n")
        commands = {name: self.command(name, text) for name, text in (("good.cpp", HEAD + "A a;\n"), ("bad.cpp", "A a;\n"))}
        for command in commands.values():
            command.update(directory=str(self.folder), command=command["command"].replace("clang++", "c++ -I."))
        self.assertEqual(clang_tidy.compiled_alone(commands["good.cpp"]), "")
        self.assertIn("bad.cpp:1", clang_tidy.compiled_alone(commands["bad.cpp"]))
        self.assertFalse((self.folder / "good.cpp.o").exists())

    def test_a_change_of_any_source_or_header_changes_the_key(self):
        batch = [self.command("a.cpp", HEAD), self.command("b.cpp", "")]
        keys = set()
        for name, text in (("a.h", ""), ("a.h", "int a;"), ("a.cpp", HEAD + "//"), ("b.cpp", "//")):
            self.file(name, text)
            keys.add(clang_tidy.key_of(clang_tidy.Sources(self.folder), batch, b""))
        self.assertEqual(len(keys), 4)


if __name__ == "__main__":
    unittest.main()
