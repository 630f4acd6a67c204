#!/usr/bin/env python3
"""Makes text stubs of the frameworks for the linker, out of our declarations.

usage: make_stubs.py ZIG DECLARATIONS FOLDER

DECLARATIONS is the folder of our declarations. Writes to FOLDER one stub per framework, and one of the Objective-C
runtime, which the compiler calls by itself. A symbol that is not declared is in no stub, so a program that uses it does
not link.
"""
import pathlib
import sys

from declarations import DeclarationError, framework_names, read_declarations

# The letters in the install names of the frameworks' libraries. They have not changed since the first macOS.
VERSIONS = {"AppKit": "C", "Foundation": "C"}
INSTALL_NAMES = {"Sparkle": "@rpath/Sparkle.framework/Versions/B/Sparkle"}
PROCESSORS = "arm64-macos, x86_64-macos"

# The functions that the compiler calls by itself: for reference counting those in
# https://clang.llvm.org/docs/AutomaticReferenceCounting.html#runtime-support, and those for messages, properties, loops
# and exceptions.
RUNTIME = """
objc_autorelease objc_autoreleasePoolPop objc_autoreleasePoolPush objc_autoreleaseReturnValue objc_copyWeak
objc_destroyWeak objc_initWeak objc_loadWeak objc_loadWeakRetained objc_moveWeak objc_release objc_retain
objc_retainAutorelease objc_retainAutoreleaseReturnValue objc_retainAutoreleasedReturnValue objc_retainBlock
objc_storeStrong objc_storeWeak objc_unsafeClaimAutoreleasedReturnValue
objc_alloc objc_alloc_init objc_opt_class objc_opt_isKindOfClass objc_opt_new objc_opt_respondsToSelector objc_opt_self
objc_msgSend objc_msgSendSuper2 objc_msgSendSuper2_stret objc_msgSend_stret
objc_copyStruct objc_getProperty objc_setProperty_atomic objc_setProperty_atomic_copy objc_setProperty_nonatomic
objc_setProperty_nonatomic_copy objc_enumerationMutation
objc_begin_catch objc_end_catch objc_exception_rethrow objc_exception_throw objc_terminate __objc_personality_v0
_objc_empty_cache objc_ehtype_vtable OBJC_EHTYPE_id objc_sync_enter objc_sync_exit
""".split()


def stub(install_name, symbols, classes):
    """The text of one stub."""
    lines = ["--- !tapi-tbd", "tbd-version: 4", f"targets: [ {PROCESSORS} ]", f"install-name: '{install_name}'"]
    if symbols or classes:
        lines += ["exports:", f"  - targets: [ {PROCESSORS} ]"]
    if symbols:
        lines.append(f"    symbols: [ {', '.join('_' + name for name in sorted(symbols))} ]")
    if classes:
        lines.append(f"    objc-classes: [ {', '.join(sorted(classes))} ]")
    return "\n".join(lines) + "\n...\n"


def install_name_of(framework):
    """The path by which a program finds a framework's library on a Mac."""
    folder = f"/System/Library/Frameworks/{framework}.framework/Versions/{VERSIONS.get(framework, 'A')}"
    return INSTALL_NAMES.get(framework, f"{folder}/{framework}")


def stubs_of(interface, frameworks):
    """Pairs of a stub's path, relative to the output folder, and its text."""
    yield "libobjc.tbd", stub("/usr/lib/libobjc.A.dylib", RUNTIME, ["NSObject"])
    for framework in frameworks:
        things = [*interface.functions.values(), *interface.constants.values()]
        symbols = [thing.name for thing in things if thing.framework == framework and thing.exported]
        if framework == "CoreFoundation":
            symbols.append("__CFConstantStringClassReference")  # the class of string literals
        classes = [entry.name for entry in interface.classes.values() if entry.framework == framework]
        symbols += [f"OBJC_EHTYPE_$_{name}" for name in classes if interface.classes[name].thrown]
        yield f"{framework}.framework/{framework}.tbd", stub(install_name_of(framework), symbols, classes)


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__.strip())
    zig, declarations, folder = sys.argv[1:]
    try:
        interface = read_declarations(zig, declarations)
    except DeclarationError as error:
        sys.exit(f"make_stubs.py: {error}")
    for path, text in stubs_of(interface, {*framework_names(declarations), "CoreFoundation"}):
        target = pathlib.Path(folder, path)
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
