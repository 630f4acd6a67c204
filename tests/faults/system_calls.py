"""System calls as strace prints them, and the errors that each can give."""
import re

# What the manual page of each call names and an ordinary file system on Linux can give to a program that calls it
# rightly, with a disk that fails, fills up or turns read-only, and with limits that are reached.
OF_PATHS = ["EACCES", "EIO", "ELOOP", "ENOENT", "ENOMEM", "ENOTDIR"]
OF_CHANGES = ["EDQUOT", "ENOSPC", "EPERM", "EROFS"]
OF_TRANSFERS = ["EINTR", "EIO"]
ERRORS = {
    "openat": [*OF_PATHS, *OF_CHANGES, "EBUSY", "EEXIST", "EINTR", "EISDIR", "EMFILE", "ENFILE", "ENXIO", "EOVERFLOW",
               "ETXTBSY"],
    "newfstatat": [*OF_PATHS, "EOVERFLOW"],
    "fstat": ["EIO", "ENOMEM", "EOVERFLOW"],
    "readlink": [*OF_PATHS, "EINVAL"],
    "read": [*OF_TRANSFERS, "EISDIR", "ENOMEM"],
    "write": [*OF_TRANSFERS, "EDQUOT", "EFBIG", "ENOMEM", "ENOSPC", "EPERM"],
    "fsync": [*OF_TRANSFERS, "EDQUOT", "EINVAL", "ENOSPC", "EROFS"],
    "close": [*OF_TRANSFERS, "EDQUOT", "ENOSPC"],
    "mkdir": [*OF_PATHS, *OF_CHANGES, "EEXIST", "EMLINK"],
    "chmod": [*OF_PATHS, "EPERM", "EROFS"],
    "fchmod": ["EACCES", "EIO", "ENOMEM", "EPERM", "EROFS"],
    "rename": [*OF_PATHS, *OF_CHANGES, "EBUSY", "EXDEV"],
    "renameat2": [*OF_PATHS, *OF_CHANGES, "EBUSY", "EEXIST", "EINVAL", "ENOSYS", "EXDEV"],
    "unlink": [*OF_PATHS, "EBUSY", "EPERM", "EROFS"],
    "flock": ["EAGAIN", "EINTR", "ENOLCK", "EOPNOTSUPP"],
    "getdents64": ["EIO", "ENOENT", "ENOMEM"],
}
ERRORS["writev"] = ERRORS["write"]

LINE = re.compile(r"(?:\d+ +)?(\w+)\((.*)")


class Call:
    """The `ordinal`-th call of that name in a process, counted from 1; `place` is what it is about, in a form that is
    the same in every run, or None if it has nothing to do with the home folder."""

    def __init__(self, name, ordinal, place):
        self.name = name
        self.ordinal = ordinal
        self.place = place

    def __str__(self):
        return f"{self.name}({self.place})"


def place_of(arguments, home):
    """Those parts of a call's arguments and result that are below `home`, without what is random in their names."""
    found = re.findall(re.escape(str(home)) + r'(/[^">]*)?', arguments)
    names = [re.sub(r"-[0-9A-F]{8}-[0-9A-F-]{27}", "-*", re.sub(r"/\.quillery-\w+", "/.quillery-*", name))
             for name in found]
    return " ".join(dict.fromkeys(name or "/" for name in names)) or None


def calls_of(lines, home):
    """The calls in what strace printed of a process."""
    counts = {}
    calls = []
    for line in lines:
        match = LINE.match(line)
        if not match:
            continue
        name = match[1]
        counts[name] = counts.get(name, 0) + 1
        calls.append(Call(name, counts[name], place_of(match[2], home)))
    return calls
