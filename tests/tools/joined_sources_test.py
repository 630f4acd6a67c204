#!/usr/bin/env python3
"""Tests how joined_sources.py joins sources.

usage: joined_sources_test.py
"""
import unittest

from scratch_sources import HEAD, ScratchSources  # first, because it sets the path of the tools
from joined_sources import joined


class JoinedSourcesTest(ScratchSources):
    def test_each_header_comes_once_before_all_sources(self):
        text = joined([self.file("a.cpp", HEAD + "int a;\n"), self.file("b.cpp", HEAD + "int b;\n")])
        self.assertEqual(text, '#include <string>\n#include "a.h"\nint a;\nint b;\n')

    def test_an_include_after_the_first_code_stays_in_its_place(self):
        text = "#include <string>\n#ifdef __APPLE__\n#include <crt_externs.h>\n#endif\n"
        self.assertEqual(joined([self.file("a.cpp", text)]), text)

    def test_tests_are_in_a_namespace_each(self):
        files = [self.file(name, "TEST(A, b) {}\n") for name in ("a.cpp", "b.cpp")]
        self.assertEqual(joined(files), "namespace source0 {\nTEST(A, b) {}\n}\nnamespace source1 {\nTEST(A, b) {}\n}\n")

    def test_messages_of_a_compiler_name_the_places_in_the_sources(self):
        file = self.file("a.cpp", HEAD + "int a;\n")
        self.assertIn(f'#line 5 "{file}"\nint a;\n', joined([file], keep_places=True))


if __name__ == "__main__":
    unittest.main()
