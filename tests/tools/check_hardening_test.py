#!/usr/bin/env python3
"""Tests of tools/check_hardening.sh with small programs, built with and without each protection."""
import pathlib
import subprocess
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parent.parent.parent / "tools/check_hardening.sh"
SOURCE = """int main(int count, char** words) {
  char text[64];
  for (int i = 0; i < count; ++i) text[i] = *words[i];
  return text[0];
}"""
HARDENED = ["-fPIE", "-fstack-protector-strong", "-pie", "-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack"]


class CheckHardeningTest(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory())

    def check(self, *instead):
        """Builds a program with the usual options and then these. Returns the exit status and output of the check."""
        program = f"{self.folder}/program"
        command = ["g++", "-x", "c++", "-", "-o", program, *HARDENED, *instead]
        subprocess.run(command, input=SOURCE, text=True, check=True)
        checked = subprocess.run([CHECK, program], stdout=subprocess.PIPE, text=True)
        return checked.returncode, checked.stdout.replace(program, "program")

    def test_accepts_a_hardened_program(self):
        self.assertEqual(self.check(), (0, "Hardened: program\n"))

    def test_rejects_a_program_at_a_fixed_address(self):
        self.assertEqual(self.check("-no-pie"), (1, "program: is not position-independent\n"))

    def test_rejects_an_executable_stack(self):
        self.assertEqual(self.check("-Wl,-z,execstack"), (1, "program: has an executable stack\n"))

    def test_rejects_lazy_binding(self):
        self.assertEqual(self.check("-Wl,-z,lazy"), (1, "program: binds functions lazily\n"))

    def test_rejects_writable_relocations(self):
        status, output = self.check("-Wl,-z,norelro")
        self.assertEqual(status, 1)
        self.assertIn("program: has no read-only relocations\n", output)

    def test_rejects_a_library_search_path(self):
        self.assertEqual(self.check("-Wl,-rpath,/tmp/lib"), (1, "program: has its own library search path\n"))

    def test_rejects_a_missing_stack_protector(self):
        self.assertEqual(self.check("-fno-stack-protector"), (1, "program: has no stack protector\n"))


if __name__ == "__main__":
    unittest.main()
