"""What the companion does on the recorded disk, and what must be on the disk after a power loss."""
import os
import pathlib
import signal
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "faults"))
import tracer  # noqa: E402
from scratch_home import ScratchHome  # noqa: E402


def calls(names):
    """A set of system calls as strace expects it. Not every processor has all of them."""
    return ",".join(f"?{name}" for name in names.split())


# Without openat: what it creates or truncates is committed after the next of these calls.
CHANGES = calls("chmod fchmod fchmodat fchown fchownat fsetxattr ftruncate link linkat mkdir mkdirat rename renameat "
                "renameat2 unlink unlinkat write writev")
FLUSHES = calls("fdatasync fsync sync sync_file_range syncfs")
FIRST_BACKUP = "Bookmarks-00000000-0000-4000-8000-000000000000.plist"


class Scenario:
    """`old` and `new` are the contents of the bookmark file before and after it, None for no file. `backups` has the
    contents of the backups that are there before it, by name. `killed` is the number of sorts that are killed before
    their first flush, before the last one runs to its end."""

    def __init__(self, name, arguments, old, new, *, backups=None, killed=0):
        self.name = name
        self.arguments = arguments
        self.old = old
        self.new = new
        self.backups = backups or {}
        self.killed = killed

    def prepare(self, folder):
        home = ScratchHome(folder, self.old or b"")
        if self.old is None:
            home.bookmarks.unlink()
        if self.backups:
            home.backups.mkdir(parents=True, mode=0o700)
        for name, content in self.backups.items():
            (home.backups / name).write_bytes(content)

    def perform(self, home, program, pace):
        command = [program, *self.arguments]
        for _ in range(self.killed):
            killed = tracer.run(home, command, "-e", f"trace={FLUSHES}", "-e", f"inject={FLUSHES}:signal=SIGKILL")
            require(killed.result.status == -signal.SIGKILL, "the sort was not killed", killed.result)
        result = pace.run(home, command)
        require(result.status == 0, "it failed", result)
        require(home.content() == self.new, "the bookmark file is not as expected", result)


def require(condition, problem, result):
    if not condition:
        raise RuntimeError(f"{problem}: status {result.status}, {result.text!r}")


def scenarios(sample):
    """All scenarios with the files of a sample."""
    backup = {FIRST_BACKUP: sample.saved}
    return [
        Scenario("sort", ["sort"], sample.old, sample.new),
        Scenario("restore", ["restore", FIRST_BACKUP], sample.old, sample.saved, backups=backup),
        Scenario("restore, no file", ["restore", FIRST_BACKUP], None, sample.saved, backups=backup),
        Scenario("sort after kills", ["sort"], sample.old, sample.new, killed=3),
    ]


class Pace:
    """How a program is run on the recorded disk."""

    def __init__(self, name, *, commits=False, void=False):
        self.name = name
        self.commits = commits  # whether another file is flushed after each of the program's calls
        self.void = void        # whether the program's own flushes do nothing and return success

    def run(self, home, command):
        if not self.commits and not self.void:
            return home.run(command)
        tampering = [f"inject={FLUSHES}:retval=0"] if self.void else []
        if self.commits:
            tampering.append(f"inject={CHANGES}:signal=SIGSTOP")
        options = [option for change in tampering for option in ("-e", change)]
        return tracer.run(home, command, "-e", f"trace={CHANGES},{FLUSHES}", *options,
                          when_stopped=lambda process: commit_and_continue(home, process)).result


def commit_and_continue(home, process):
    """Flushes a file of another program. The file system then commits to its journal whatever was changed in it, but
    does not write the content of other files."""
    with open(home.root / "file of another program", "ab") as file:
        file.write(b"text")
        file.flush()
        os.fsync(file.fileno())
    os.kill(process, signal.SIGCONT)


def paces(void):
    return [Pace("undisturbed", void=void), Pace("another file flushed after each call", commits=True, void=void)]


def problems(home, scenario, reported):
    """What is wrong with a home folder after a power loss; `reported` if it came after the report of success."""
    content = home.content()
    backups = {path.name: path.read_bytes() for path in home.backup_files()}
    if content not in (scenario.old, scenario.new):
        yield f"the bookmark file is {described(content, scenario)}"
    if reported and content == scenario.old:
        yield "the bookmark file is the old one after the report of success"
    for name, expected in scenario.backups.items():
        if backups.pop(name, None) != expected:
            yield f"the backup {name} is missing or damaged"
    for name, found in backups.items():
        if found != scenario.old:
            yield f"the new backup {name} is {described(found, scenario)}"
    if content != scenario.old and scenario.old is not None and not backups:
        yield "the bookmark file is not the old one, and there is no backup of that"


def described(content, scenario):
    if content is None:
        return "missing"
    known = {scenario.old: "the old one", scenario.new: "the new one"}
    if content in known:
        return known[content]
    zeros = ", all zeros" if content and not any(content) else ""
    return f"{len(content)} bytes{zeros}"
