#!/usr/bin/env python3
"""Tests of tools/check_hardening.sh, on small programs built with and without each protection."""
import pathlib
import subprocess
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parent.parent.parent / "tools/check_hardening.sh"
SOURCE = "int main(int count, char** words) { char text[64]; for (int i = 0; i < count; ++i) text[i] = *words[i]; return text[0]; }"
HARDENED = ["-fPIE", "-fstack-protector-strong", "-pie", "-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack"]


class CheckHardeningTest(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory())

    def check(self, *instead):
        """What the check says of a program built with the usual options and then these."""
        program = f"{self.folder}/program"
        subprocess.run(["g++", "-x", "c++", "-", "-o", program, *HARDENED, *instead], input=SOURCE, text=True, check=True)
        checked = subprocess.run([CHECK, program], stdout=subprocess.PIPE, text=True)
        return checked.returncode, checked.stdout.replace(program, "program")

    def test_a_hardened_program_passes(self):
        self.assertEqual(self.check(), (0, "Hardened: program\n"))

    def test_a_program_at_a_fixed_address_does_not(self):
        self.assertEqual(self.check("-no-pie"), (1, "program: is not position-independent\n"))

    def test_a_program_with_an_executable_stack_does_not(self):
        self.assertEqual(self.check("-Wl,-z,execstack"), (1, "program: has an executable stack\n"))

    def test_a_program_that_binds_late_does_not(self):
        self.assertEqual(self.check("-Wl,-z,lazy"), (1, "program: does not bind its functions at the start\n"))

    def test_a_program_whose_tables_can_be_written_does_not(self):
        status, said = self.check("-Wl,-z,norelro")
        self.assertEqual(status, 1)
        self.assertIn("program: has no read-only relocations\n", said)

    def test_a_program_that_names_a_folder_for_its_libraries_does_not(self):
        self.assertEqual(self.check("-Wl,-rpath,/tmp/lib"), (1, "program: looks for libraries in a folder of its own\n"))

    def test_a_program_without_guards_does_not(self):
        self.assertEqual(self.check("-fno-stack-protector"), (1, "program: does not guard its stacks\n"))


if __name__ == "__main__":
    unittest.main()
