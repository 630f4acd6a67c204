"""Compares our declarations of frameworks with published listings of these frameworks."""
import collections
import difflib

from interface import ANY_OBJECT, STRING, Kind, Method, joined, setter_of

# Frameworks whose headers include those of other frameworks, so a header may declare what the others list.
BRINGS = {
    "CoreGraphics": {"CoreFoundation", "Runtime"},
    "CoreFoundation": {"Runtime"},
    "Foundation": {"CoreFoundation", "CoreGraphics", "Runtime"},
}
ROOT_PROTOCOL = "NSObjectProtocol"  # the name in listings of the protocol NSObject, which is also a class


def fits(ours, theirs, listing):
    """Returns true if a declared kind matches the listed one, as far as a listing shows."""
    theirs = settled(theirs, listing)
    if ours.what == "block" and theirs.what == "block":
        pairs = zip((*ours.arguments, ours.result), (*theirs.arguments, theirs.result))
        return len(ours.arguments) == len(theirs.arguments) and all(fits(*pair, listing) for pair in pairs)
    if ours.what == "number":  # options without a declared case are a number with the enumeration's name
        return theirs.what == "number" or theirs == Kind("enumeration", ours.name)
    if ours.what == "reference":
        return theirs in (ANY_OBJECT, Kind("pointer"))
    return (ours.what, ours.name.lstrip("_")) == (theirs.what, theirs.name.lstrip("_"))


def settled(kind, listing):
    """A listed kind in the form of our own: structures told apart from classes, NSString as a string."""
    if kind.what == "object" and kind.name in listing.structures:
        return Kind("structure", kind.name)
    if kind == Kind("object", "NSString"):
        return STRING
    return Kind("object", "NSObject") if kind == Kind("object", ROOT_PROTOCOL) else kind


class Comparison:
    """The result of comparing: complaints, what a listing does not show (name and reason), and counts."""

    def __init__(self, ours, listing):
        self.ours, self.listing = ours, listing
        self.complaints, self.not_shown, self.counts = [], [], collections.Counter()

    def run(self):
        for entry in self.ours.classes.values():
            self.compare_class(entry)
        for entry in self.ours.protocols.values():
            self.compare_protocol(entry)
        for function in self.ours.functions.values():
            self.compare_function(function)
        for constant in self.ours.constants.values():
            self.compare_constant(constant)
        for enumeration in self.ours.enumerations.values():
            self.compare_enumeration(enumeration)
        for structure in self.ours.structures.values():
            self.compare_structure(structure)
        return self

    def find(self, table, what, entry):
        """Returns the listed thing of that name. Complains if it is not listed, and returns None, or if it belongs to
        another framework."""
        self.counts[what] += 1
        name = entry.name if entry.name in table else "_" + entry.name.lstrip("_")
        if name not in table:
            near = difflib.get_close_matches(entry.name, table, 1, 0.8)
            self.complaints.append(f"{entry.name}: no {what} of this name is listed{hint(near)}")
            return None
        found = table[name]
        if found.framework != entry.framework and found.framework not in BRINGS.get(entry.framework, ()):
            self.complaints.append(f"{entry.name}: declared in {entry.framework}, listed in {found.framework}")
        return found

    # --- Classes and protocols ----------------------------------------------------------------------------------------

    def compare_class(self, entry):
        found = self.find(self.listing.classes, "class", entry)
        if found is None:
            return
        lineage = self.lineage(found)
        names = {ancestor.name for ancestor in lineage}
        if entry.parent and entry.parent not in names - {entry.name}:
            self.complaints.append(f"{entry.name}: its parent is listed as {found.parent}, not {entry.parent}")
        self.compare_adopted(entry, lineage)
        self.compare_members(entry, lineage)

    def compare_protocol(self, entry):
        found = self.find(self.listing.protocols, "protocol", entry)
        if found is not None:
            lineage = self.lineage(found)
            self.compare_adopted(entry, lineage)
            self.compare_members(entry, lineage, demand_optional=True)

    def lineage(self, entry):
        """A listed class or protocol with everything that it inherits from and adopts."""
        result, waiting = [], [entry]
        while waiting:
            current = waiting.pop(0)
            if current in result:
                continue
            result.append(current)
            waiting += [self.listing.classes[name] for name in [current.parent] if name in self.listing.classes]
            waiting += [self.listing.protocols[name] for name in current.protocols if name in self.listing.protocols]
        return result

    def compare_adopted(self, entry, lineage):
        names = {ancestor.name for ancestor in lineage}
        for protocol in entry.protocols:
            self.counts["adopted protocol"] += 1
            if (ROOT_PROTOCOL if protocol == "NSObject" else protocol) not in names:
                self.complaints.append(f"{entry.name}: does not adopt {protocol} in its listing")

    def compare_members(self, entry, lineage, demand_optional=False):
        methods = [method for ancestor in lineage for method in ancestor.methods]
        properties = [item for ancestor in lineage for item in ancestor.properties]
        for method in entry.methods:
            self.counts["method"] += 1
            where = f"{'+' if method.on_class else '-'}[{entry.name} {method.name}]"
            listed = [other for other in methods if other.name == joined(method.name)]
            listed += [accessor for item in properties for accessor in accessors(item)
                       if joined(accessor.name) == joined(method.name)]
            self.judge(where, method, listed, methods, demand_optional)
        for item in entry.properties:
            self.counts["property"] += 1
            self.compare_property(f"{entry.name}.{item.name}", item, properties, methods, demand_optional)

    def judge(self, where, method, listed, all_methods, demand_optional):
        """Complains about a method that matches no listed method of its name, reporting the closest one."""
        if not listed:
            near = difflib.get_close_matches(joined(method.name), [other.name for other in all_methods], 1)
            self.complaints.append(f"{where}: no such selector is listed{hint(near)}")
            return
        troubles = [list(self.troubles(method, other, demand_optional)) for other in listed]
        fewest = min(troubles, key=len)
        self.complaints += [f"{where}: {trouble}" for trouble in fewest]

    def troubles(self, method, other, demand_optional):
        """The differences between a declared method and a listed one of the same name."""
        if len(method.arguments) != len(other.arguments):
            yield f"takes {count(len(other.arguments), 'argument')} in its listing, not {len(method.arguments)}"
            return
        if method.name.count(":") != len(method.arguments):
            yield "does not have one colon per argument"
        if method.on_class != other.on_class:
            yield f"is a method of the {'class' if other.on_class else 'instance'} in its listing"
        if not fits(method.result, other.result, self.listing):
            yield f"returns {settled(other.result, self.listing)} in its listing, not {method.result}"
        for number, (ours, theirs) in enumerate(zip(method.arguments, other.arguments), 1):
            if not fits(ours, theirs, self.listing):
                yield f"argument {number} is {settled(theirs, self.listing)} in its listing, not {ours}"
        if demand_optional and method.optional != other.optional:
            yield f"is {'optional' if other.optional else 'required'} in its listing"

    def compare_property(self, where, item, properties, methods, demand_optional):
        listed = [other for other in properties if other.name == item.name]
        if not listed:
            near = difflib.get_close_matches(item.name, [other.name for other in properties], 1)
            self.complaints.append(f"{where}: no such property is listed{hint(near)}")
            return
        troubles = [list(self.property_troubles(item, other, demand_optional)) for other in listed]
        self.complaints += [f"{where}: {trouble}" for trouble in min(troubles, key=len)]
        self.compare_getter(where, item, {method.name for method in methods if not method.arguments})

    def property_troubles(self, item, other, demand_optional):
        if item.on_class != other.on_class:
            yield f"is a property of the {'class' if other.on_class else 'instance'} in its listing"
        if not fits(item.kind, other.kind, self.listing):
            yield f"is {settled(other.kind, self.listing)} in its listing, not {item.kind}"
        if other.readonly and not item.readonly:
            yield "is read-only in its listing"
        if demand_optional and item.optional != other.optional:
            yield f"is {'optional' if other.optional else 'required'} in its listing"

    def compare_getter(self, where, item, listed):
        """Checks a getter whose name differs from its property's. Some listings have the accessors as methods, which
        shows the getter's name."""
        other = f"is{item.name[0].upper()}{item.name[1:]}"
        if item.getter == item.name:
            if other in listed and item.name not in listed:
                self.complaints.append(f"{where}: its getter is {other} in its listing")
        elif item.getter != other:
            self.complaints.append(f"{where}: a getter cannot be called {item.getter}")
        elif other not in listed:
            self.not_shown.append((where, f"the listing does not show that its getter is {other}"))

    # --- The rest -----------------------------------------------------------------------------------------------------

    def compare_function(self, function):
        found = self.find(self.listing.functions, "function", function)
        if found is None:
            return
        ours = Method(function.name + ":" * len(function.arguments), False, function.result, function.arguments)
        theirs = Method(function.name, False, found.result, found.arguments)
        self.complaints += [f"{function.name}: {trouble}" for trouble in self.troubles(ours, theirs, False)]

    def compare_constant(self, constant):
        found = self.find(self.listing.constants, "constant", constant)
        if found is None:
            return
        if not fits(constant.kind, found.kind, self.listing):
            kind = settled(found.kind, self.listing)
            self.complaints.append(f"{constant.name}: is {kind} in its listing, not {constant.kind}")
        if constant.value is not None:
            self.not_shown.append((constant.name, f"the listing does not show that its value is {constant.value}"))

    def compare_enumeration(self, enumeration):
        found = self.find(self.listing.enumerations, "enumeration", enumeration)
        if found is None:
            return
        for name, value in enumeration.cases.items():
            self.counts["enumeration case"] += 1
            ending = max((case for case in found.cases if name.endswith(case)), key=len, default=None)
            if ending is None:
                near = [case for case in found.cases if difflib.get_close_matches(case, [name], 1, 0.3)][:1]
                self.complaints.append(f"{name}: no such case of {enumeration.name} is listed{hint(near)}")
            elif found.cases[ending] != value:
                self.complaints.append(f"{name}: is {found.cases[ending]} in its listing, not {value}")
            elif not begins_alike(name.removesuffix(ending), enumeration.name):
                where = f"{ending} of {enumeration.name}"
                self.complaints.append(f"{name}: {where} is listed, but probably with another prefix")

    def compare_structure(self, structure):
        found = self.find(self.listing.structures, "structure", structure)
        if found is None:
            return
        fitting = len(structure.fields) == len(found.fields) and all(
            ours[0] == theirs[0] and fits(ours[1], theirs[1], self.listing)
            for ours, theirs in zip(structure.fields, found.fields))
        if not fitting:
            fields = ", ".join(f"{name} ({settled(kind, self.listing)})" for name, kind in found.fields)
            self.complaints.append(f"{structure.name}: has in its listing {fields}")


def begins_alike(beginning, name):
    """Returns true if the cases of an enumeration may have this prefix: the first words of the enumeration's name, such
    as "NSCalendar" of NSCalendarOptions, or its singular, such as "NSEventModifierFlag" of NSEventModifierFlags."""
    following = name[len(beginning):len(beginning) + 1]
    return beginning != "" and name.startswith(beginning) and (following in ("", "s") or following.isupper())


def accessors(item):
    """The methods that a listed property stands for."""
    yield Method(item.name, item.on_class, item.kind, [], item.optional)
    if not item.readonly:
        yield Method(setter_of(item.name), item.on_class, Kind("void"), [item.kind], item.optional)


def hint(near):
    return f"; {near[0]} is" if near else ""


def count(number, noun):
    """A number with its noun: "1 class", "2 properties"."""
    if number == 1:
        return f"1 {noun}"
    plural = noun[:-1] + "ies" if noun.endswith("y") else noun + ("es" if noun.endswith("s") else "s")
    return f"{number} {plural}"
