"""Reads our declarations of frameworks, include/<Framework>/<Framework>.h, with the compiler that also builds with
them."""
import json
import os
import pathlib
import re
import subprocess
import tempfile

from interface import (ANY_OBJECT, ARRAY, BOOLEAN, NUMBER, POINTER, REFERENCE, SELF, STRING, VOID, Class, Constant,
                       Enumeration, Function, Interface, Kind, Method, Property, Structure, setter_of,
                       split_outside_brackets)

TARGET = "aarch64-macos.12.0"
QUALIFIERS = re.compile(r"\b(const|_Nonnull|_Nullable|_Null_unspecified|__kindof|__strong|__weak|__autoreleasing"
                        r"|__unsafe_unretained|__block|enum|struct|oneway|nonnull|nullable)\b")
# The compiler prints such a macro with the type of what it is about.
AVAILABILITY = re.compile(r"\bAPI_AVAILABLE\(macos\([\d.]+\)\)")
BUILT_IN = {
    "void": VOID, "bool": BOOLEAN, "BOOL": BOOLEAN, "SEL": STRING, "id": ANY_OBJECT, "Class": ANY_OBJECT,
    "instancetype": SELF, "Protocol *": POINTER, "char *": STRING, "void *": POINTER,
    **dict.fromkeys(["char", "signed char", "unsigned char", "short", "unsigned short", "int", "unsigned int", "long",
                     "unsigned long", "long long", "unsigned long long", "float", "double", "char16_t"], NUMBER),
}


class DeclarationError(Exception):
    """The declarations do not compile, or have something that cannot be compared; the message names it and its
    place."""


def framework_names(folder):
    """The frameworks that are declared in a folder."""
    return sorted(entry.name for entry in pathlib.Path(folder).iterdir() if (entry / f"{entry.name}.h").is_file())


def syntax_tree(zig, folder):
    """The compiler's syntax tree of all declarations in a folder."""
    with tempfile.TemporaryDirectory() as scratch:
        source = pathlib.Path(scratch, "all.mm")
        source.write_text("".join(f"#import <{name}/{name}.h>\n" for name in framework_names(folder)), encoding="utf-8")
        command = [str(zig), "c++", "-target", TARGET, "-std=c++20", "-fobjc-arc", "-isystem", str(folder),
                   "-c", str(source), "-o", str(pathlib.Path(scratch, "all.o"))]
        compiled = subprocess.run(command, capture_output=True, text=True, check=False)
        if compiled.returncode != 0:
            raise DeclarationError(compiled.stderr)
        # Ignore the exit status: zig expects an object file, which the compiler does not write when it prints the tree.
        printed = subprocess.run([*command, "-Xclang", "-ast-dump=json"], capture_output=True, text=True, check=False)
    return json.loads(printed.stdout)


def declared_with_files(tree):
    """Each top-level declaration, taken out of its `extern "C"`, with its file.

    The tree names a file only where it differs from that of the previous location, so this follows all locations.
    """
    current = ""

    def follow(node):
        nonlocal current
        for key, value in node.items():
            if key == "file":
                current = value
            elif key == "includedFrom":
                continue
            elif isinstance(value, dict):
                follow(value)
            elif isinstance(value, list) and key != "inner":
                for item in value:
                    if isinstance(item, dict):
                        follow(item)

    def walk(node, outermost):
        for key in ("loc", "range"):
            follow(node.get(key, {}))
        if outermost and node["kind"] != "LinkageSpecDecl":
            found.append((node, current if node["loc"] else ""))
            outermost = False
        for child in node.get("inner", []):
            if child:
                walk(child, outermost)

    found = []
    for child in tree["inner"]:
        walk(child, True)
    return found


def value_of(node):
    """The number to which a constant's initializer evaluates, or None if this reader cannot evaluate it."""
    inner = [child for child in node.get("inner", []) if "Attr" not in child["kind"]]
    if "value" in node:
        return int(node["value"]) if re.fullmatch(r"-?\d+", node["value"]) else float(node["value"])
    values = [value_of(child) for child in inner]
    if not values or None in values:
        return None
    operators = {"|": lambda a, b: a | b, "<<": lambda a, b: a << b, "+": lambda a, b: a + b, "-": lambda a, b: a - b}
    if node["kind"] == "BinaryOperator":
        return operators[node["opcode"]](*values) if node["opcode"] in operators else None
    if node["kind"] == "UnaryOperator":
        return -values[0] if node["opcode"] == "-" else None
    return values[0]


class DeclarationReader:
    """Turns the compiler's syntax tree into an interface."""

    def __init__(self, folder):
        self.folder = os.path.abspath(folder)
        self.interface = Interface()
        self.types, self.tags, self.objects, self.nameless = {}, {}, set(), {}

    def framework_of(self, file):
        """The framework that a file declares, "" if it is not one of our files."""
        path = os.path.abspath(file)
        return pathlib.Path(path).relative_to(self.folder).parts[0] if path.startswith(self.folder + os.sep) else ""

    def read(self, tree):
        declared = declared_with_files(tree)
        for node, _ in declared:
            self.learn_name(node)
        for (before, _), (node, _) in zip(declared, declared[1:]):
            self.learn_options(before, node)
        for node, file in declared:
            if framework := self.framework_of(file):
                self.add(node, file, framework)
        return self.interface

    def learn_name(self, node):
        kind, name = node["kind"], node.get("name")
        if kind == "TypedefDecl":
            self.types[name] = node["type"]["qualType"]
            owned = next((child["ownedTagDecl"] for child in node.get("inner", []) if "ownedTagDecl" in child), {})
            if owned.get("kind") == "CXXRecordDecl" and not owned.get("name"):
                self.nameless[owned["id"]] = name
                self.tags[name] = "structure"
        elif kind == "EnumDecl" and name:
            self.tags[name] = "enumeration"
        elif kind == "CXXRecordDecl" and name:
            self.tags[name] = "structure"
        elif kind in ("ObjCInterfaceDecl", "ObjCProtocolDecl"):
            self.objects.add(name)

    def learn_options(self, before, node):
        """Recognises a set of options, which in C++ is a typedef of a number followed by an unnamed enumeration of the
        same type."""
        if before["kind"] == "TypedefDecl" and node["kind"] == "EnumDecl" and "name" not in node:
            if node.get("fixedUnderlyingType", {}).get("qualType") == before["type"]["qualType"]:
                node["name"] = before["name"]
                self.tags[before["name"]] = "enumeration"

    def kind_of(self, text, parameters=frozenset()):
        """The kind of a type in the compiler's notation; `parameters` are generic type parameters."""
        text = " ".join(QUALIFIERS.sub(" ", AVAILABILITY.sub(" ", text)).split()).replace("* *", "**")
        if text in BUILT_IN:
            return BUILT_IN[text]
        if block := re.fullmatch(r"(.+?) ?\([\^*]\s*\)\((.*)\)", text):
            taken = [part for part in split_outside_brackets(block[2], ",") if part != "void"]
            arguments = [self.kind_of(part, parameters) for part in taken]
            return Kind("block", arguments=tuple(arguments), result=self.kind_of(block[1], parameters))
        if (standing := re.fullmatch(r"(\w+)(?: ?<(\w+)>)?", text)) and standing[1] in parameters:
            return Kind("object", standing[2] or "id")
        if re.fullmatch(r"CF\w+Ref", text):
            return REFERENCE
        if text in self.tags:
            return Kind(self.tags[text], text)
        if text in self.types:
            kind = self.kind_of(self.types[text], parameters)
            return Kind("number", text) if kind.what == "number" else kind
        if adopted := re.fullmatch(r"(?:id|Class) ?<(\w+)>", text):
            return Kind("object", adopted[1])
        if named := re.fullmatch(r"(\w+) ?(?:<.*>)? ?\*", text):
            if named[1] in self.objects:
                return STRING if named[1] == "NSString" else Kind("object", named[1])
        if text.endswith("*"):
            return POINTER
        if text.endswith("]"):
            return ARRAY
        raise DeclarationError(f"The type '{text}' cannot be compared.")

    def add(self, node, file, framework):
        kind, interface = node["kind"], self.interface
        if kind in ("ObjCInterfaceDecl", "ObjCProtocolDecl", "ObjCCategoryDecl"):
            self.add_class(node, file, framework)
        elif kind == "EnumDecl":
            self.add_enumeration(node, framework)
        elif kind == "CXXRecordDecl" and node.get("completeDefinition"):
            fields = [(child["name"], self.kind_of(child["type"]["qualType"]))
                      for child in node["inner"] if child["kind"] == "FieldDecl"]
            name = node.get("name") or self.nameless[node["id"]]
            interface.structures[name] = Structure(name, framework, fields)
        elif kind == "FunctionDecl":
            arguments = [self.kind_of(child["type"]["qualType"])
                         for child in node.get("inner", []) if child["kind"] == "ParmVarDecl"]
            result = self.kind_of(split_result(node["type"]["qualType"]))
            exported = node.get("storageClass") != "static"
            if exported:
                self.demand_plain_name(node)
            interface.functions[node["name"]] = Function(node["name"], framework, result, arguments, exported)
        elif kind == "VarDecl":
            self.add_constant(node, framework)

    @staticmethod
    def demand_plain_name(node):
        if node["mangledName"] != "_" + node["name"]:
            raise DeclarationError(f"{node['name']} is not declared extern \"C\".")

    def add_constant(self, node, framework):
        exported = "init" not in node
        value = None if exported else value_of(node)
        if exported:
            self.demand_plain_name(node)
        if not exported and value is None:
            raise DeclarationError(f"{node['name']} has no value that can be read.")
        constant = Constant(node["name"], framework, self.kind_of(node["type"]["qualType"]), value, exported)
        self.interface.constants[node["name"]] = constant

    def add_enumeration(self, node, framework):
        cases, following = {}, 0
        for child in node.get("inner", []):
            if child["kind"] == "EnumConstantDecl":
                explicit = value_of(child)
                cases[child["name"]] = following if explicit is None else explicit
                following = cases[child["name"]] + 1
        name = node.get("name")
        if name and cases:
            self.interface.enumerations[name] = Enumeration(name, framework, cases)
        elif not name:
            for case, value in cases.items():
                self.interface.constants[case] = Constant(case, framework, NUMBER, value, exported=False)

    def add_class(self, node, file, framework):
        is_protocol = node["kind"] == "ObjCProtocolDecl"
        name = node["interface"]["name"] if node["kind"] == "ObjCCategoryDecl" else node["name"]
        parent = node.get("super", {}).get("name", "")
        if not parent and "inner" not in node and "protocols" not in node:
            return  # a forward declaration
        entries = self.interface.protocols if is_protocol else self.interface.classes
        entry = entries.setdefault(name, Class(name, framework))
        entry.parent = entry.parent or parent
        entry.thrown |= any(child["kind"] == "ObjCExceptionAttr" for child in node.get("inner", []))
        adopted = [protocol["name"] for protocol in node.get("protocols", [])]
        entry.protocols += [protocol for protocol in adopted if protocol not in entry.protocols]
        parameters = {child["name"] for child in node.get("inner", []) if child["kind"] == "ObjCTypeParamDecl"}
        optional = OptionalParts(file, node) if is_protocol else None
        for child in node.get("inner", []):
            self.add_member(entry, child, parameters, optional)

    def add_member(self, entry, node, parameters, optional):
        is_optional = optional is not None and "loc" in node and optional.contains(node)
        if node["kind"] == "ObjCPropertyDecl":
            name, kind = node["name"], self.kind_of(node["type"]["qualType"], parameters)
            entry.properties.append(Property(name, node.get("class", False), kind, node.get("readonly", False),
                                             node.get("getter", {}).get("name", name), is_optional))
            if node.get("setter", {}).get("name", setter_of(name)) != setter_of(name):
                raise DeclarationError(f"The property {name} of {entry.name} has a setter of another name.")
        elif node["kind"] == "ObjCMethodDecl" and not node.get("isImplicit"):
            arguments = [self.kind_of(child["type"]["qualType"], parameters)
                         for child in node.get("inner", []) if child["kind"] == "ParmVarDecl"]
            result = self.kind_of(node["returnType"]["qualType"], parameters)
            entry.methods.append(Method(node["name"], not node["instance"], result, arguments, is_optional))


class OptionalParts:
    """Tells which members of a protocol are optional. The compiler's tree lacks that, so this reads the last @optional
    or @required before a member in the source."""

    def __init__(self, file, protocol):
        self.text = pathlib.Path(file).read_bytes()
        self.start = offset_of(protocol)

    def contains(self, member):
        words = re.findall(rb"@(optional|required)\b", self.text[self.start:offset_of(member)])
        return bool(words) and words[-1] == b"optional"


def offset_of(node):
    """The offset of a declaration in its file; for one that a macro expands to, the offset of the macro."""
    return node["loc"].get("expansionLoc", node["loc"])["offset"]


def split_result(text):
    """The return type in a function's type: everything before its last argument list."""
    depth = 0
    for place in range(len(text) - 1, -1, -1):
        depth += {")": 1, "(": -1}.get(text[place], 0)
        if depth == 0 and text[place] == "(":
            return text[:place].strip()
    raise DeclarationError(f"The function type '{text}' cannot be read.")


def read_declarations(zig, folder):
    """The interface that the declarations in a folder describe. Throws DeclarationError."""
    return DeclarationReader(folder).read(syntax_tree(zig, folder))
