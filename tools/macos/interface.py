"""What a framework offers, as our declarations and the published listings both say it: the names, and of each type the
kind, which is as much as a listing tells."""
import dataclasses


@dataclasses.dataclass(frozen=True)
class Kind:
    """A type as far as it can be compared. `what` is one of

    void, boolean, string            (a string is an NSString, a C string or a selector: a listing does not tell)
    number                           of any size, with the name that was given to it, if any
    object, with the name of the class or protocol, or "id" if it may be any object
    enumeration, structure           with the name
    self                             the class that the method is called on
    pointer, reference, array        to memory; to an object of Core Foundation; of anything
    block                            with what it takes, and answers
    """
    what: str
    name: str = ""
    arguments: tuple = ()
    result: "Kind | None" = None

    def __str__(self):
        if self.what == "block":
            return f"block ({', '.join(map(str, self.arguments))}) -> {self.result}"
        return f"{self.what} {self.name}".strip()


VOID, BOOLEAN, NUMBER, STRING = Kind("void"), Kind("boolean"), Kind("number"), Kind("string")
POINTER, REFERENCE, ARRAY = Kind("pointer"), Kind("reference"), Kind("array")
SELF, ANY_OBJECT = Kind("self"), Kind("object", "id")


@dataclasses.dataclass
class Method:
    """A method; in a listing, `name` is the selector's parts joined in camel case."""
    name: str
    on_class: bool
    result: Kind
    arguments: list
    optional: bool = False


@dataclasses.dataclass
class Property:
    """A property; a listing does not say what its getter is called (`getter` is empty there)."""
    name: str
    on_class: bool
    kind: Kind
    readonly: bool
    getter: str = ""
    optional: bool = False


@dataclasses.dataclass
class Class:
    """A class, or a protocol, which has no parent; `protocols` are those that it says it adopts, and `thrown` says that
    its objects are exceptions."""
    name: str
    framework: str
    parent: str = ""
    thrown: bool = False
    protocols: list = dataclasses.field(default_factory=list)
    methods: list = dataclasses.field(default_factory=list)
    properties: list = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Function:
    """A function; `exported` if it is a symbol of its framework's library."""
    name: str
    framework: str
    result: Kind
    arguments: list
    exported: bool = True


@dataclasses.dataclass
class Constant:
    """A constant; `value` is None if it is not said. `exported` if it is a symbol of its framework's library."""
    name: str
    framework: str
    kind: Kind
    value: int | None = None
    exported: bool = True


@dataclasses.dataclass
class Enumeration:
    """An enumeration and the values of its cases; a listing leaves out how all of their names begin."""
    name: str
    framework: str
    cases: dict


@dataclasses.dataclass
class Structure:
    """A structure and its fields in order, as pairs of name and kind."""
    name: str
    framework: str
    fields: list


@dataclasses.dataclass
class Interface:
    """All of it, by name."""
    classes: dict = dataclasses.field(default_factory=dict)
    protocols: dict = dataclasses.field(default_factory=dict)
    functions: dict = dataclasses.field(default_factory=dict)
    constants: dict = dataclasses.field(default_factory=dict)
    enumerations: dict = dataclasses.field(default_factory=dict)
    structures: dict = dataclasses.field(default_factory=dict)


def joined(selector):
    """A selector as listings write it: "setObject:forKey:" is setObjectForKey."""
    first, *others = [part for part in selector.split(":") if part] or [""]
    return first + "".join(part[0].upper() + part[1:] for part in others)


def setter_of(name):
    """The selector that sets a property: "setTitle:" of "title"."""
    return f"set{name[0].upper()}{name[1:]}:"


def split_outside_brackets(text, separator):
    """The parts of a text between separators that are in no bracket of any kind."""
    parts, depth, start = [], 0, 0
    for place, character in enumerate(text):
        if character in "(<[{":
            depth += 1
        elif character in ")]}" or (character == ">" and text[place - 1:place] != "="):
            depth -= 1
        elif character == separator and depth == 0:
            parts.append(text[start:place].strip())
            start = place + 1
    rest = text[start:].strip()
    return parts + [rest] if rest or parts else []
