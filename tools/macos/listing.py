"""Reads listings of frameworks: one file per Objective-C framework, which declares it in TypeScript."""
import pathlib
import re

from declarations import framework_names
from interface import (ANY_OBJECT, ARRAY, BOOLEAN, NUMBER, POINTER, SELF, STRING, VOID, Class, Constant, Enumeration,
                       Function, Interface, Kind, Method, Property, Structure, split_outside_brackets)

ROOTS = ["CoreFoundation", "Runtime"]  # used by every framework

SIMPLE = {
    "void": VOID, "boolean": BOOLEAN, "number": NUMBER, "string": STRING, "this": SELF, "InstanceType<This>": SELF,
    "interop.Object": ANY_OBJECT, "interop.Pointer": POINTER, "interop.PointerConvertible": POINTER,
    "unknown /* const array */": ARRAY,
}
HEAD = re.compile(r"declare (class|interface) (\w+)(.*) \{")
CASES = re.compile(r"declare const (\w+): \{")
CONSTANT = re.compile(r"declare const (\w+): (.+);")
FUNCTION = re.compile(r"declare function (\w+)(.+);")
MEMBER = re.compile(r"  (static )?(readonly |get |set )?([\w$]*)(\?)?(.*);")


class ListingError(Exception):
    """A malformed line; the message is the file, the line number and the line."""


class Lines:
    """The lines of a file except blank ones and comments, and the position of the reader."""

    def __init__(self, path):
        self.path, self.number = path, 0
        self.lines = path.read_text(encoding="utf-8").splitlines()

    def __iter__(self):
        for self.number, line in enumerate(self.lines, 1):
            if line.strip() and not line.lstrip().startswith("//"):
                yield line

    def error(self):
        return ListingError(f"{self.path.name}:{self.number}: {self.lines[self.number - 1]}")


def kind_of(text, parameters=frozenset()):
    """The kind of a type in TypeScript's notation; `parameters` are generic type parameters."""
    text = split_outside_brackets(text, "|")[0]
    if text in SIMPLE:
        return SIMPLE[text]
    if enumeration := re.fullmatch(r"interop\.Enum<typeof (\w+)>", text):
        return Kind("enumeration", enumeration[1])
    if text.startswith("("):
        arguments, result = signature(text, "=>", parameters)
        return Kind("block", arguments=tuple(arguments), result=result)
    if text in parameters:
        return ANY_OBJECT
    if name := re.fullmatch(r"(\w+)(<.*>)?", text):
        return Kind("object", name[1])
    return Kind("other", text)


def signature(text, arrow, parameters):
    """The kinds of the arguments and of the result in "<generics>(name: type, …): type"; the generics are optional."""
    if text.startswith("<"):
        text = text[len(bracketed(text)):]
    taken = bracketed(text)
    rest = text[len(taken):].strip()
    if not rest.startswith(arrow):
        raise ValueError(text)
    arguments = [split_outside_brackets(part, ":") for part in split_outside_brackets(taken[1:-1], ",")]
    kinds = [kind_of(":".join(argument[1:]), parameters) for argument in arguments if argument[0] != "this"]
    return kinds, kind_of(rest[len(arrow):].strip(), parameters)


def bracketed(text):
    """The start of a text up to the bracket that closes the one at its first character."""
    depth = 0
    for place, character in enumerate(text):
        if character in "(<[{":
            depth += 1
        elif character in ")]}" or (character == ">" and text[place - 1] != "="):
            depth -= 1
        if depth == 0:
            return text[:place + 1]
    raise ValueError(text)


def type_parameters(text):
    """The names in "<A = interop.Object, B extends X>", none if the text does not start with a bracket."""
    if not text.startswith("<"):
        return frozenset()
    return frozenset(re.match(r"\w+", part)[0] for part in split_outside_brackets(bracketed(text)[1:-1], ","))


class ListingReader:
    """Reads one file into an interface."""

    def __init__(self, path, interface):
        self.lines, self.interface, self.framework = Lines(path), interface, path.name.split(".")[0]
        self.remaining = iter(self.lines)

    def read(self):
        for line in self.remaining:
            if not line.startswith("declare "):
                continue
            try:
                self.declaration(line)
            except (ValueError, IndexError):
                raise self.lines.error() from None

    def declaration(self, line):
        interface = self.interface
        if head := HEAD.fullmatch(line):
            self.body(*head.groups())
        elif head := CASES.fullmatch(line):
            interface.enumerations.setdefault(head[1], Enumeration(head[1], self.framework, self.cases()))
        elif constant := CONSTANT.fullmatch(line):
            interface.constants.setdefault(constant[1], Constant(constant[1], self.framework, kind_of(constant[2])))
        elif function := FUNCTION.fullmatch(line):
            arguments, result = signature(function[2], ":", frozenset())
            interface.functions.setdefault(function[1], Function(function[1], self.framework, result, arguments))
        else:
            raise ValueError

    def cases(self):
        values = {}
        for line in self.remaining:
            if line == "};":
                return values
            # A few values are strings that represent fractions; these are skipped.
            if case := re.fullmatch(r"  (\w+): (-?\d+),", line):
                values[case[1]] = int(case[2])
        raise ValueError

    def body(self, word, name, rest):
        """Reads a class, a protocol, a structure, or the empty class that the notation declares for each protocol."""
        parameters = type_parameters(rest)
        entry = Class(name, self.framework)
        if extended := re.search(r" extends ([\w, ]+?)(?:<.*>)?(?: implements|$)", rest):
            entry.parent = extended[1]
        if implemented := re.search(r" implements ([\w, ]+)", rest):
            entry.protocols = implemented[1].split(", ")
        constructed = self.members(entry, parameters)
        if word == "interface":
            entry.protocols, entry.parent = entry.parent.split(", ") if entry.parent else [], ""
            self.interface.protocols.setdefault(name, entry)
        elif constructed:
            fields = [(item.name, item.kind) for item in entry.properties]
            self.interface.structures.setdefault(name, Structure(name, self.framework, fields))
        elif entry.parent != "NativeObject" or entry.methods or entry.properties:
            self.interface.classes.setdefault(name, entry)

    def members(self, entry, parameters):
        """Adds the members up to the end of the body. Returns true if it has a constructor, which only structures
        have."""
        constructed = False
        for line in self.remaining:
            if line == "}":
                return constructed
            if "[Symbol." in line:  # TypeScript's declaration of an iterator
                continue
            if line.startswith("  constructor("):
                constructed = True
            elif member := MEMBER.fullmatch(line):
                self.member(entry, member, parameters)
            else:
                raise ValueError
        raise ValueError

    @staticmethod
    def member(entry, member, parameters):
        static, word, name, optional, rest = member.groups()
        name = name.rstrip("$")
        word = (word or "").strip()
        if word == "get":
            kind = kind_of(rest.removeprefix("():").strip(), parameters)
            entry.properties.append(Property(name, bool(static), kind, True))
        elif word == "set":
            for item in entry.properties:
                if item.name == name and item.on_class == bool(static):
                    item.readonly = False
        elif rest.startswith(":"):
            kind = kind_of(rest[1:].strip(), parameters)
            entry.properties.append(Property(name, bool(static), kind, word == "readonly", optional=bool(optional)))
        else:
            arguments, result = signature(rest, ":", parameters | type_parameters(rest))
            entry.methods.append(Method(name, bool(static), result, arguments, bool(optional)))


def listing_paths(ours, listings):
    """The paths of the listings of the frameworks in our include/ and of ROOTS: our own listing beside include/ if
    there is one, otherwise the published one."""
    names = framework_names(ours / "include")
    names += [name for name in ROOTS if name not in names]
    own = {name: ours / f"{name}.d.ts" for name in names}
    return [own[name] if own[name].exists() else pathlib.Path(listings, f"{name}.d.ts") for name in names]


def read_listings(paths):
    """The combined interface of all these files. If two files declare the same name, the first wins."""
    interface = Interface()
    for path in paths:
        ListingReader(pathlib.Path(path), interface).read()
    return interface
