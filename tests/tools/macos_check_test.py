#!/usr/bin/env python3
"""Tests of the commands tools/macos/check_declarations.py, check_programs.py and check_availability.py. Each test makes
one mistake in the declarations of a small framework, or in a program built with them, and expects the checker's
complaint. The last tests make every kind of mistake in each of the program's own declarations.

usage: macos_check_test.py ZIG LISTINGS [unittest's arguments]

LISTINGS is the folder of the published listings.
"""
import copy
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOLS = ROOT / "tools" / "macos"
SAMPLE = ROOT / "tests" / "data" / "macos"
ZIG, LISTINGS = sys.argv[1:3] if len(sys.argv) > 2 else sys.exit(__doc__.strip())

sys.path.insert(0, str(TOOLS))
from check_availability import compare_symbols  # noqa: E402
from check_declarations import Reasons  # noqa: E402
from comparison import Comparison  # noqa: E402
from declarations import read_declarations  # noqa: E402
from interface import NUMBER, Interface, Method  # noqa: E402
from listing import listing_paths, read_listings  # noqa: E402


class CheckTest(unittest.TestCase):
    """Each test changes its own copy of the sample."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name, "sample")
        shutil.copytree(SAMPLE, self.folder)
        self.header = self.folder / "include" / "Garden" / "Garden.h"

    def change(self, path, old, new):
        text = path.read_text(encoding="utf-8")
        self.assertEqual(text.count(old), 1, f"{old} does not occur exactly once")
        path.write_text(text.replace(old, new), encoding="utf-8")

    def run_checker(self, name, *arguments):
        """Runs a checker. Returns its exit status and its output."""
        command = [sys.executable, TOOLS / name, *arguments]
        done = subprocess.run(list(map(str, command)), capture_output=True, text=True, check=False)
        self.assertEqual(done.stderr, "")
        return done.returncode, done.stdout

    def check(self):
        return self.run_checker("check_declarations.py", ZIG, self.folder, self.folder / "listings")

    def expect_complaints(self, complaints, ending):
        """Expects that the checker failed with exactly these complaints."""
        status, output = ending
        self.assertEqual(output.strip().rpartition("\n\n")[2].splitlines(), complaints)
        self.assertEqual(status, 1)

    def expect_of(self, old, new, complaint):
        """Changes the declarations and expects that the checker fails with exactly this complaint."""
        self.change(self.header, old, new)
        self.expect_complaints([complaint], self.check())


class Declarations(CheckTest):
    def test_passes_listed_declarations_and_counts_them(self):
        status, output = self.check()
        self.assertEqual(status, 0, output)
        self.assertIn("3 classes, 6 properties, 7 methods, 1 protocol, 1 adopted protocol, 1 function, 2 constants, "
                      "2 enumerations, 4 enumeration cases, 1 structure.", output)

    def test_prints_what_a_listing_does_not_show(self):
        _, output = self.check()
        self.assertIn("GardenLargest: the listing does not show that its value is 12", output)

    def test_finds_a_misspelled_selector(self):
        self.expect_of("plant:(NSString*)flower using:", "plant:(NSString*)flower usin:",
                       "-[Garden plant:usin:]: no such selector is listed; plantUsing is")

    def test_finds_an_added_argument(self):
        self.expect_of("using:(GardenTools)tools", "using:(GardenTools)tools on:(NSInteger)day",
                       "-[Garden plant:using:on:]: no such selector is listed; plantUsing is")

    def test_counts_arguments_if_the_name_is_the_same(self):
        self.expect_of("plant:(NSString*)flower using:(GardenTools)tools", "plantUsing:(GardenTools)tools",
                       "-[Garden plantUsing:]: takes 2 arguments in its listing, not 1")

    def test_finds_a_class_method_listed_as_instance_method(self):
        self.expect_of("- (BOOL)plant:", "+ (BOOL)plant:",
                       "+[Garden plant:using:]: is a method of the instance in its listing")

    def test_finds_an_instance_method_listed_as_class_method(self):
        self.expect_of("+ (NSInteger)countOfGardens", "- (NSInteger)countOfGardens",
                       "-[Garden countOfGardens]: is a method of the class in its listing")

    def test_finds_another_result_type(self):
        self.expect_of("- (BOOL)plant:", "- (void)plant:",
                       "-[Garden plant:using:]: returns boolean in its listing, not void")

    def test_finds_another_argument_type(self):
        self.expect_of("using:(GardenTools)tools", "using:(GardenSeason)tools",
                       "-[Garden plant:using:]: argument 2 is enumeration GardenTools in its listing, "
                       "not enumeration GardenSeason")

    def test_looks_into_blocks(self):
        self.expect_of("(void (^)(BOOL done, NSString* problem))", "(void (^)(BOOL done))",
                       "-[Garden waterBed:completion:]: argument 2 is block (boolean, string) -> void in its listing, "
                       "not block (boolean) -> void")

    def test_finds_an_unlisted_class(self):
        self.expect_of("@interface GardenPlace", "@interface GardenSpot : NSObject\n@end\n@interface GardenPlace",
                       "GardenSpot: no class of this name is listed")

    def test_finds_another_parent_class(self):
        self.expect_of("@interface Garden : GardenPlace", "@interface Garden : NSString",
                       "Garden: its parent is listed as GardenPlace, not NSString")

    def test_finds_a_protocol_that_is_not_adopted(self):
        self.expect_of("@interface Garden : GardenPlace", "@interface Garden : GardenPlace <GardenDelegate>",
                       "Garden: does not adopt GardenDelegate in its listing")

    def test_finds_a_class_declared_in_another_framework(self):
        self.change(self.folder / "include" / "Foundation" / "Foundation.h", "@interface NSString",
                    "@interface GardenPlace : NSObject\n@end\n@interface NSString")
        self.expect_of("@interface GardenPlace : NSObject\n@property(readonly) NSInteger number;\n@end\n", "",
                       "GardenPlace: declared in Foundation, listed in Garden")

    def test_finds_a_required_method_that_is_optional(self):
        self.expect_of("@optional\n", "", "-[GardenDelegate garden:shouldWater:]: is optional in its listing")

    def test_finds_an_unlisted_property(self):
        self.expect_of("NSString* name;", "NSString* nam;", "Garden.nam: no such property is listed; name is")

    def test_finds_another_property_type(self):
        self.expect_of("NSString* name;", "GardenPlace* name;",
                       "Garden.name: is string in its listing, not object GardenPlace")

    def test_finds_a_writable_property_listed_as_read_only(self):
        self.expect_of("@property(readonly) GardenSeason", "@property GardenSeason",
                       "Garden.season: is read-only in its listing")

    def test_finds_a_getter_of_another_name(self):
        self.expect_of("@property(getter=isOpen) BOOL", "@property BOOL",
                       "Garden.open: its getter is isOpen in its listing")

    def test_finds_an_instance_property_listed_as_class_property(self):
        self.expect_of("@property(class, readonly) Garden*", "@property(readonly) Garden*",
                       "Garden.sharedGarden: is a property of the class in its listing")

    def test_finds_a_function_with_a_missing_argument(self):
        self.expect_of("GardenCount(NSString* name, GardenBed bed)", "GardenCount(NSString* name)",
                       "GardenCount: takes 2 arguments in its listing, not 1")

    def test_finds_a_function_with_c_plus_plus_linkage(self):
        self.expect_of('extern "C" {', 'extern "C++" {', 'GardenCount is not declared extern "C".')

    def test_finds_an_unlisted_constant(self):
        self.expect_of("GardenDidChangeNotification", "GardenDidChangNotification", "GardenDidChangNotification: "
                       "no constant of this name is listed; GardenDidChangeNotification is")

    def test_finds_a_changed_option(self):
        self.expect_of("GardenToolRake = 1UL << 2", "GardenToolRake = 1UL << 4",
                       "GardenToolRake: is 4 in its listing, not 16")

    def test_finds_a_changed_enumeration_case(self):
        self.expect_of("GardenSeasonAutumn = 3", "GardenSeasonAutumn", "GardenSeasonAutumn: is 3 in its listing, not 2")

    def test_finds_an_unlisted_enumeration_case(self):
        self.expect_of("GardenSeasonSpring", "GardenSeasonSprint",
                       "GardenSeasonSprint: no such case of GardenSeason is listed; Spring is")

    def test_finds_an_enumeration_case_with_another_prefix(self):
        self.expect_of("GardenSeasonSpring", "GardenSeasnSpring",
                       "GardenSeasnSpring: Spring of GardenSeason is listed, but probably with another prefix")

    def test_finds_a_structure_with_other_fields(self):
        self.expect_of("  double width;\n  NSInteger rows;\n", "  NSInteger rows;\n  double width;\n",
                       "GardenBed: has in its listing width (number), rows (number)")

    def test_finds_declarations_that_do_not_compile(self):
        self.change(self.header, "NSString* name;", "NSStrin* name;")
        status, output = self.check()
        self.assertEqual(status, 1)
        self.assertRegex(output, "Garden.h:[0-9]+:17: error: unknown type name 'NSStrin'")


class AcceptedComplaints(CheckTest):
    complaint = "-[Garden plant:usin:]: no such selector is listed"

    def accept(self):
        text = f"{self.complaint}\n  A slip of the gardener's.\n"
        (self.folder / "not_listed.txt").write_text(text, encoding="utf-8")

    def test_a_complaint_with_a_reason_is_printed_and_passes(self):
        self.change(self.header, "using:", "usin:")
        self.accept()
        status, output = self.check()
        self.assertEqual(status, 0, output)
        self.assertIn(f"  {self.complaint}\n    A slip of the gardener's.\n", output)

    def test_a_reason_without_a_complaint_fails(self):
        self.accept()
        self.expect_complaints([f"not_listed.txt: matches no complaint: {self.complaint}"], self.check())


class Programs(CheckTest):
    frameworks = "Foundation,CoreFoundation,Garden"

    def build(self, processors=("aarch64", "x86_64"), system="12.0", options=()):
        """Builds the sample program for these processors into one file. Returns its path."""
        stubs = self.folder / "stubs"
        subprocess.run([sys.executable, TOOLS / "make_stubs.py", ZIG, self.folder / "include", stubs], check=True)
        parts = []
        for processor in processors:
            parts.append(self.folder / processor)
            command = [ZIG, "cc", "-target", f"{processor}-macos.{system}", "-fobjc-arc", "-g0", "-Wno-everything",
                       "-isystem", self.folder / "include", self.folder / "gardener.m", "-o", parts[-1], f"-F{stubs}",
                       f"-L{stubs}", "-lobjc", *options]
            for framework in self.frameworks.split(","):
                command += ["-framework", framework]
            subprocess.run(list(map(str, command)), check=True)
        program = self.folder / "gardener"
        subprocess.run(["llvm-lipo-14", "-create", *parts, "-output", program], check=True)
        return program

    def look_at(self, program, frameworks=None):
        return self.run_checker("check_programs.py", self.folder, self.folder / "listings", program,
                                frameworks or self.frameworks)

    def expect_of_both(self, complaint, program):
        complaints = [f"gardener: for {processor}, {complaint}" for processor in ("x86_64", "arm64")]
        self.expect_complaints(complaints, self.look_at(program))

    def test_passes_a_program_if_everything_is_listed(self):
        status, output = self.look_at(self.build())
        self.assertEqual(status, 0, output)
        self.assertIn("gardener, arm64: sends 6 selectors of the system, defines 1 class with 2 methods that the "
                      "system calls", output)

    def test_finds_an_unlisted_selector(self):
        self.change(self.folder / "gardener.m", "[garden isOpen]", "[garden respondsToSelector:@selector(isOpn)]")
        self.expect_of_both("it sends isOpn, which no listed class or protocol has", self.build())

    def test_finds_a_misspelled_delegate_method(self):
        self.change(self.folder / "gardener.m", "shouldWater:", "shoudWater:")
        self.expect_of_both("Gardener has garden:shoudWater:, which the program never sends and no adopted protocol "
                            "has in its listing", self.build())

    def test_finds_a_method_of_a_protocol_that_is_not_adopted(self):
        self.change(self.folder / "gardener.m", " <GardenDelegate>", "")
        status, output = self.look_at(self.build())
        self.assertEqual(status, 1)
        self.assertIn("Gardener has gardenDidChange:, which the program never sends", output)

    def test_finds_a_missing_processor(self):
        self.expect_complaints(["gardener: its processors are x86_64, not arm64, x86_64"],
                               self.look_at(self.build(["x86_64"])))

    def test_finds_another_minimum_system(self):
        self.expect_of_both("the minimum system is 13.0, not 12.0", self.build(system="13.0"))

    def test_finds_an_extra_framework(self):
        status, output = self.look_at(self.build(), "Foundation,CoreFoundation")
        self.assertEqual(status, 1)
        self.assertRegex(output, "gardener: for arm64, it loads .*/Garden.framework/Versions/A/Garden, ")

    def test_finds_an_extra_search_path(self):
        self.expect_of_both("its framework search path is /tmp, not nothing", self.build(options=["-Wl,-rpath,/tmp"]))

    def test_finds_a_file_that_is_not_a_program(self):
        self.expect_complaints(["gardener.m: it is not a 64-bit Mach-O file"], self.look_at(self.folder / "gardener.m"))


class ReferenceCounting(unittest.TestCase):
    def test_no_source_compiles_without_reference_counting(self):
        sources = sorted((ROOT / "platform" / "macos").rglob("*.mm"))
        self.assertNotEqual(sources, [])
        for source in sources:
            command = [ZIG, "c++", "-target", "aarch64-macos.12.0", "-std=c++20", "-E", "-o", os.devnull,
                       "-isystem", TOOLS / "include", "-I", ROOT, source]
            without = subprocess.run(list(map(str, command)), capture_output=True, text=True, check=False)
            with self.subTest(source=source.name):
                self.assertIn("automatic reference counting", without.stderr)
                self.assertNotEqual(without.returncode, 0)


class Availability(unittest.TestCase):
    append, later = "__ZNSt3__16appendEv", "__ZNSt3__13pmr20get_default_resourceEv"

    def test_passes_the_accepted_symbols(self):
        self.assertEqual(compare_symbols({self.append}, {self.append}), [])

    def test_finds_a_symbol_that_is_not_accepted(self):
        complaint = f"libcxx_symbols.txt lacks: {self.later}  std::__1::pmr::get_default_resource()"
        self.assertEqual(compare_symbols({self.append, self.later}, {self.append}), [complaint])

    def test_finds_an_accepted_symbol_that_nothing_needs(self):
        complaint = f"libcxx_symbols.txt: nothing needs {self.later}"
        self.assertEqual(compare_symbols({self.append}, {self.append, self.later}), [complaint])


class EveryMistake(unittest.TestCase):
    """Makes each mistake in each of the declarations that the program is built with."""

    @classmethod
    def setUpClass(cls):
        cls.ours = read_declarations(ZIG, TOOLS / "include")
        cls.listing = read_listings(listing_paths(TOOLS, LISTINGS))
        cls.reasons = Reasons(TOOLS / "not_listed.txt")

    def is_found(self, **things):
        """Returns true if there is a new complaint when only these things are declared."""
        result = Comparison(Interface(**things), self.listing).run()
        return any(not self.reasons.accepts(complaint) for complaint in result.complaints)

    def classes(self):
        """Each class and protocol, with the name of its table."""
        for table in ("classes", "protocols"):
            for entry in getattr(self.ours, table).values():
                yield table, entry

    def members(self, kind):
        """Each method or property, alone in a copy of its class or protocol."""
        for table, entry in self.classes():
            for member in getattr(entry, kind):
                alone = copy.copy(entry)
                alone.methods, alone.properties, alone.protocols = [], [], []
                yield table, alone, member

    def expect_all(self, kind, mistake, excused=lambda entry, member: False):
        """Expects that the mistake is found in each member, except where `excused` returns true."""
        tried = 0
        for table, entry, member in self.members(kind):
            wrong = mistake(copy.copy(member))
            setattr(entry, kind, [wrong])
            tried += 1
            with self.subTest(owner=entry.name, member=member.name):
                found = self.is_found(**{table: {entry.name: entry}})
                self.assertTrue(found or excused(entry, wrong))
        self.assertGreater(tried, 50)

    def listed_names(self, entry, on_class):
        """The listed names of class or instance members of a class and its ancestors."""
        known = self.listing.protocols.get(entry.name) or self.listing.classes[entry.name]
        lineage = Comparison(self.ours, self.listing).lineage(known)
        return {member.name for other in lineage for member in [*other.methods, *other.properties]
                if member.on_class == on_class}

    def test_an_extra_letter_in_a_selector(self):
        def misspell(method):
            first, colon, rest = method.name.partition(":")
            method.name = f"{first}x{colon}{rest}"
            return method
        self.expect_all("methods", misspell)

    def test_an_extra_argument(self):
        def lengthen(method):
            name = method.name + "extra:" if ":" in method.name else method.name + ":"
            return Method(name, method.on_class, method.result, [*method.arguments, NUMBER], method.optional)
        self.expect_all("methods", lengthen)

    def test_a_class_method_as_instance_method_and_vice_versa(self):
        def swap(method):
            method.on_class = not method.on_class
            return method
        self.expect_all("methods", swap, lambda entry, wrong: wrong.name in self.listed_names(entry, wrong.on_class))

    def test_an_extra_letter_in_a_property(self):
        def misspell(item):
            item.name += "x"
            return item
        self.expect_all("properties", misspell)

    def test_a_class_property_as_instance_property_and_vice_versa(self):
        def swap(item):
            item.on_class = not item.on_class
            return item
        self.expect_all("properties", swap, lambda entry, wrong: wrong.name in self.listed_names(entry, wrong.on_class))

    def test_another_value_of_an_enumeration_case(self):
        for enumeration in self.ours.enumerations.values():
            for case in enumeration.cases:
                wrong = copy.deepcopy(enumeration)
                wrong.cases = {case: enumeration.cases[case] + 1}
                with self.subTest(case=case):
                    self.assertTrue(self.is_found(enumerations={wrong.name: wrong}))

    def test_an_extra_letter_in_any_other_name(self):
        for table in ("classes", "protocols", "functions", "constants", "enumerations", "structures"):
            for thing in getattr(self.ours, table).values():
                wrong = copy.copy(thing)
                wrong.name += "x"
                with self.subTest(name=thing.name):
                    self.assertTrue(self.is_found(**{table: {wrong.name: wrong}}))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
