"""The interface of a framework in the form that our declarations and the published listings have in common: names, and
the kind of each type, because a listing shows no more of a type."""
import dataclasses


@dataclasses.dataclass(frozen=True)
class Kind:
    """The comparable part of a type. `what` is one of

    void, boolean
    string                   an NSString, a C string or a selector, which listings do not tell apart
    number                   of any size; `name` is its typedef, if any
    object                   `name` is the class or protocol, or "id" for any object
    enumeration, structure   `name` is its name
    self                     the class on which the method is called
    pointer                  to memory
    reference                to an object of Core Foundation
    array                    of any elements
    block                    with the kinds of its arguments and its result
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
    """A property; listings do not show the name of its getter, so `getter` is empty there."""
    name: str
    on_class: bool
    kind: Kind
    readonly: bool
    getter: str = ""
    optional: bool = False


@dataclasses.dataclass
class Class:
    """A class, or a protocol, which has no parent. `protocols` are the directly adopted ones; `thrown` is true if its
    objects are exceptions."""
    name: str
    framework: str
    parent: str = ""
    thrown: bool = False
    protocols: list = dataclasses.field(default_factory=list)
    methods: list = dataclasses.field(default_factory=list)
    properties: list = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Function:
    """A function; `exported` is true if it is a symbol of its framework's library."""
    name: str
    framework: str
    result: Kind
    arguments: list
    exported: bool = True


@dataclasses.dataclass
class Constant:
    """A constant; `value` is None if it is unknown. `exported` is true if it is a symbol of its framework's library."""
    name: str
    framework: str
    kind: Kind
    value: int | None = None
    exported: bool = True


@dataclasses.dataclass
class Enumeration:
    """An enumeration and the values of its cases; listings omit the common prefix of the names."""
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
    """Everything that is declared or listed, by name."""
    classes: dict = dataclasses.field(default_factory=dict)
    protocols: dict = dataclasses.field(default_factory=dict)
    functions: dict = dataclasses.field(default_factory=dict)
    constants: dict = dataclasses.field(default_factory=dict)
    enumerations: dict = dataclasses.field(default_factory=dict)
    structures: dict = dataclasses.field(default_factory=dict)


def joined(selector):
    """A selector in the notation of listings: "setObject:forKey:" is setObjectForKey."""
    first, *others = [part for part in selector.split(":") if part] or [""]
    return first + "".join(part[0].upper() + part[1:] for part in others)


def setter_of(name):
    """The selector that sets a property: "setTitle:" of "title"."""
    return f"set{name[0].upper()}{name[1:]}:"


def split_outside_brackets(text, separator):
    """Splits a text at the separators that are outside all brackets."""
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
