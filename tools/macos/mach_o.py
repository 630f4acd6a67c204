"""Reads programs for macOS: their file type, the libraries that they load, and their Objective-C classes and selectors.

The format is described in Apple's <mach-o/loader.h>, <mach-o/fat.h> and <mach-o/nlist.h>, the Objective-C part in the
runtime's own sources (objc-runtime-new.h).
"""
import dataclasses
import struct

PROCESSORS = {0x01000007: "x86_64", 0x0100000C: "arm64"}
EXECUTABLE = 2
POSITION_INDEPENDENT = 0x200000

# Load commands.
SYMBOLS, SEGMENT, MAIN, RUN_PATH, BUILD_VERSION = 0x2, 0x19, 0x80000028, 0x8000001C, 0x32
CODE_SIGNATURE, CHAINED_FIXUPS = 0x1D, 0x80000034
LIBRARIES = {0xC, 0x80000018, 0x8000001F}
MACOS = 1


class MachOError(Exception):
    """The file is not a program that can be read; the message gives the reason."""


@dataclasses.dataclass
class ObjectiveCClass:
    """A class that a program defines: its name, the protocols that it adopts, and the selectors of its methods."""
    name: str
    protocols: list
    selectors: list


class Program:
    """The part of a program for one processor."""

    def __init__(self, data):
        self.data = data
        magic, processor, _, self.kind, count, _, self.flags, _ = self.unpack("<8I", 0)
        if magic != 0xFEEDFACF:
            raise MachOError("it is not a 64-bit Mach-O file")
        self.processor = PROCESSORS.get(processor, hex(processor))
        self.libraries, self.run_paths, self.sections, self.segments = [], [], {}, []
        self.commands, self.platform, self.minimum_system = set(), None, None
        place = 32
        for _ in range(count):
            command, size = self.unpack("<2I", place)
            self.commands.add(command)
            self.load(command, place)
            place += size

    def unpack(self, layout, place):
        try:
            return struct.unpack_from(layout, self.data, place)
        except struct.error:
            raise MachOError("it ends too early") from None

    def text(self, place):
        return self.data[place:self.data.index(b"\0", place)].decode()

    def load(self, command, place):
        if command == SEGMENT:
            address, _, offset, size = self.unpack("<4Q", place + 24)
            self.segments.append((address, offset, size))
            for number in range(self.unpack("<I", place + 64)[0]):
                section = place + 72 + number * 80
                name = self.data[section:section + 16].rstrip(b"\0").decode()
                self.sections[name] = self.unpack("<2QI", section + 32)
        elif command in LIBRARIES:
            self.libraries.append(self.text(place + self.unpack("<I", place + 8)[0]))
        elif command == RUN_PATH:
            self.run_paths.append(self.text(place + self.unpack("<I", place + 8)[0]))
        elif command == BUILD_VERSION:
            self.platform, version = self.unpack("<2I", place + 8)
            self.minimum_system = f"{version >> 16}.{version >> 8 & 255}"

    # --- Objective-C --------------------------------------------------------------------------------------------------

    def place_of(self, address):
        """The offset in the file of an address in the running program."""
        for start, offset, size in self.segments:
            if start <= address < start + size:
                return offset + address - start
        raise MachOError(f"nothing is at the address {address:#x}")

    def pointers(self, section):
        """The addresses in a section that has nothing but addresses; none if there is no such section."""
        if CHAINED_FIXUPS in self.commands:
            raise MachOError("its pointers are chained fixups, which are not supported here")
        _, size, offset = self.sections.get(section, (0, 0, 0))
        return self.unpack(f"<{size // 8}Q", offset)

    def sent_selectors(self):
        """The selectors that the code sends, or refers to with @selector, for an action for example."""
        return {self.text(self.place_of(address)) for address in self.pointers("__objc_selrefs")}

    def classes(self):
        """The classes that the program defines."""
        return [self.class_at(self.place_of(address)) for address in self.pointers("__objc_classlist")]

    def class_at(self, place):
        name, selectors, protocols = self.class_data(place)
        # The metaclass has the class methods.
        _, class_selectors, _ = self.class_data(self.place_of(self.unpack("<Q", place)[0]))
        return ObjectiveCClass(name, protocols, selectors + class_selectors)

    def class_data(self, place):
        """The name, the selectors and the protocols of the class at a place."""
        data = self.place_of(self.unpack("<Q", place + 32)[0] & ~7)  # the lowest bits are the runtime's own
        name, methods, protocols = self.unpack("<3Q", data + 24)
        return self.text(self.place_of(name)), self.method_list(methods), self.protocol_list(protocols)

    def method_list(self, address):
        if address == 0:
            return []
        place = self.place_of(address)
        size, count = self.unpack("<2I", place)
        if size != 24:
            raise MachOError("its method lists are relative, which is not supported here")
        names = [self.unpack("<Q", place + 8 + number * 24)[0] for number in range(count)]
        return [self.text(self.place_of(name)) for name in names]

    def protocol_list(self, address):
        if address == 0:
            return []
        place = self.place_of(address)
        count = self.unpack("<Q", place)[0]
        protocols = [self.unpack("<Q", place + 8 + number * 8)[0] for number in range(count)]
        return [self.text(self.place_of(self.unpack("<Q", self.place_of(entry) + 8)[0])) for entry in protocols]


def read_programs(path):
    """The parts of a program file, one for each processor. Raises MachOError."""
    with open(path, "rb") as file:
        data = file.read()
    if data[:4] != bytes.fromhex("cafebabe"):
        return [Program(data)]
    count = struct.unpack_from(">I", data, 4)[0]
    places = [struct.unpack_from(">5I", data, 8 + number * 20) for number in range(count)]
    return [Program(data[offset:offset + size]) for _, _, offset, size, _ in places]
