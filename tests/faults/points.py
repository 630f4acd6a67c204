"""The points at which a fault can disturb a sort: each of its system calls on the home folder with each fault, and
faults that exist from the start."""
import os
import shutil

import tracer
from scratch_home import FOLDER
from system_calls import ERRORS


class Point:
    """A fault to try. `run` takes a home and a command, and returns the result of the sort. `before` and `relieve` take
    a home: `before` causes the fault, `relieve` removes it before the result is judged. `disk` has the mount options of
    the tmpfs that the home is on, if any. For `put`, `unseen`, `gone` and `late` see verdict.after_fault."""

    def __init__(self, kind, name, run=None, *, put=None, unseen=False, gone=False, late=None, disk=None, before=None,
                 relieve=None):
        self.kind = kind
        self.name = name
        self.run = run or (lambda home, command: home.run(command))
        self.put = put
        self.unseen = unseen
        self.gone = gone
        self.late = late
        self.disk = disk
        self.before = before or (lambda home: None)
        self.relieve = relieve or (lambda home: None)


def at_each_call(calls, sample):
    """The points of a sort that makes these calls."""
    places = [number for number, call in enumerate(calls) if call.place]
    looked, replaced = last_look(calls)
    looked_again = max((number for number in places if calls[number].name == "pread64"), default=-1)
    for number in places:
        call = calls[number]
        for error in ERRORS[call.name]:
            yield Point("a system call fails", f"{error} from {call}", lambda home, command, call=call, error=error:
                        tracer.failing(home, command, call, error), gone=error == "ENOENT")
        yield Point("killed before a call", str(call), lambda home, command, call=call:
                    tracer.killed_before(home, command, call))
        yield Point("killed after a call", str(call), lambda home, command, call=call:
                    tracer.killed_after(home, command, call))
        unseen = looked <= number < replaced
        for kind, put, change in CHANGES:
            content = sample.saved if put == "saved" else put
            yield Point(kind, str(call), lambda home, command, call=call, change=change:
                        tracer.interrupted_after(home, command, call, lambda: change(home, sample)),
                        put=(content,), unseen=unseen, gone=put is None)
        yield Point("a program writes to the open file after a call", str(call), lambda home, command, call=call:
                    written_after(home, command, call, sample), put=(sample.saved,), unseen=number >= looked,
                    late="seen" if number < looked_again else "unseen")


def written_after(home, command, call, sample):
    """Another program has the bookmark file open from the start, and writes to it after a call."""
    with open(home.bookmarks, "r+b") as file:
        def write():
            file.truncate()
            file.write(sample.saved)
            file.flush()
        return tracer.interrupted_after(home, command, call, write)


def save(home, sample):
    home.put(sample.saved)


def remove(home, _):
    if home.bookmarks.exists():
        home.bookmarks.unlink()


def put_folder(home, _):
    remove(home, _)
    home.bookmarks.mkdir()
    (home.bookmarks / "inside").write_text("kept")


CHANGES = [
    ("Safari saves another file after a call", "saved", save),
    ("the file is removed after a call", None, remove),
    ("a folder replaces the file after a call", FOLDER, put_folder),
]


def last_look(calls):
    """The indices of the last call that checks the bookmark file and of the call that replaces it. The sort cannot
    notice a change of the file between the two."""
    about_it = [number for number, call in enumerate(calls) if (call.place or "").endswith("/Bookmarks.plist")]
    replaced = next((number for number in about_it if calls[number].name == "rename"), len(calls))
    looked = max(number for number in about_it if number < replaced)
    return looked, replaced


def from_the_start(sample):
    """Faults that exist before the sort starts."""
    yield Point("the file is missing", "", put=(None,), before=lambda home: remove(home, sample))
    yield Point("a folder is in place of the file", "", put=(FOLDER,), before=lambda home: put_folder(home, sample))


def restore(home, sample):
    """Puts the old file back if the fault removed it, so that the next run has a file to sort."""
    content = home.content()
    if content == FOLDER:
        assert (home.bookmarks / "inside").read_text() == "kept"
        shutil.rmtree(home.bookmarks)
    if content in (None, FOLDER):
        home.put(sample.old)
    return home.content()


def with_limited_files(sample, page=os.sysconf("SC_PAGE_SIZE")):
    """A limit on the size of files: the write that crosses it is short, and the next one fails or kills the process."""
    limits = sorted({0, 1, len(sample.old) - 1, *range(page, len(sample.old), page)})
    for limit in limits:
        limited = ["prlimit", f"--fsize={limit}", "--core=0"]
        yield Point("killed in the middle of a write", f"at byte {limit}", lambda home, command, limited=limited:
                    home.run([*limited, "env", "--default-signal=XFSZ", *command]))
        yield Point("a file cannot grow", f"beyond {limit} bytes", lambda home, command, limited=limited:
                    home.run([*limited, "env", "--ignore-signal=XFSZ", *command]))


def with_short_transfers(library):
    for size in (1, 7, 4096):
        yield Point("short reads and writes", f"of {size} bytes", lambda home, command, size=size:
                    home.run(command, preload=library, QUILLERY_LONGEST_TRANSFER=str(size)))
