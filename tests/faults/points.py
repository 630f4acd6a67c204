"""The points at which a sort can meet a fault: each system call that it makes on the home folder, and each fault."""
import os
import shutil

import tracer
from scratch_home import FOLDER
from system_calls import ERRORS


class Point:
    """A fault to try. `run` takes a home and a command, and answers how the sort ended. `before` and `relieve` take a
    home: the one brings the fault about, the other ends it before anything is judged. `disk` holds the options of a
    file system in memory that the home is to be on. For `put`, `unseen` and `gone` see verdict.after_fault."""

    def __init__(self, kind, name, run=None, *, put=None, unseen=False, gone=False, disk=None, before=None, relieve=None):
        self.kind = kind
        self.name = name
        self.run = run or (lambda home, command: home.run(command))
        self.put = put
        self.unseen = unseen
        self.gone = gone
        self.disk = disk
        self.before = before or (lambda home: None)
        self.relieve = relieve or (lambda home: None)


def at_each_call(calls, sample):
    """The points of a sort that makes these calls."""
    places = [number for number, call in enumerate(calls) if call.place]
    looked, replaced = last_look(calls)
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
                        tracer.interrupted_after(home, command, call, lambda: change(home, sample)), put=(content,), unseen=unseen, gone=put is None)


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
    ("Safari saves another after a call", "saved", save),
    ("the file vanishes after a call", None, remove),
    ("a folder takes its place after a call", FOLDER, put_folder),
]


def last_look(calls):
    """The numbers of the call that looks at the bookmark file for the last time, and of the one that replaces it. What
    somebody else does to the file between the two is not seen."""
    about_it = [number for number, call in enumerate(calls) if (call.place or "").endswith("/Bookmarks.plist")]
    replaced = next((number for number in about_it if calls[number].name == "rename"), len(calls))
    looked = max(number for number in about_it if number < replaced)
    return looked, replaced


def from_the_start(sample):
    """What is not as it should be before the sort begins."""
    yield Point("the file is not there", "", put=(None,), before=lambda home: remove(home, sample))
    yield Point("a folder is in its place", "", put=(FOLDER,), before=lambda home: put_folder(home, sample))


def restore(home, sample):
    """Puts the old file back where a fault has taken it away, so that the next run has something to sort."""
    content = home.content()
    if content == FOLDER:
        assert (home.bookmarks / "inside").read_text() == "kept"
        shutil.rmtree(home.bookmarks)
    if content in (None, FOLDER):
        home.put(sample.old)
    return home.content()


def with_limited_files(sample, page=os.sysconf("SC_PAGE_SIZE")):
    """A file may not grow beyond a limit: the write that would cross it is short, and the next one fails or kills."""
    limits = sorted({0, 1, len(sample.old) - 1, *range(page, len(sample.old), page)})
    for limit in limits:
        limited = ["prlimit", f"--fsize={limit}", "--core=0"]
        yield Point("killed in the middle of a write", f"at byte {limit}", lambda home, command, limited=limited:
                    home.run([*limited, "env", "--default-signal=XFSZ", *command]))
        yield Point("a file cannot grow further", f"than {limit} bytes", lambda home, command, limited=limited:
                    home.run([*limited, "env", "--ignore-signal=XFSZ", *command]))


def with_short_transfers(library):
    for size in (1, 7, 4096):
        yield Point("short reads and writes", f"of {size} bytes", lambda home, command, size=size:
                    home.run(command, LD_PRELOAD=library, QUILLERY_LONGEST_TRANSFER=str(size)))
