"""System calls as strace prints them, and the errors that each can return."""
import re

# The errors in the manual page of each call that an ordinary file system on Linux can return to a correct program if
# the disk fails, is full or read-only, or a limit is reached.
OF_PATHS = ["EACCES", "EIO", "ELOOP", "ENOENT", "ENOMEM", "ENOTDIR"]
OF_CHANGES = ["EDQUOT", "ENOSPC", "EPERM", "EROFS"]
OF_TRANSFERS = ["EINTR", "EIO"]
ERRORS = {
    "openat": [*OF_PATHS, *OF_CHANGES, "EBUSY", "EEXIST", "EINTR", "EISDIR", "EMFILE", "ENFILE", "ENXIO",
               "EOPNOTSUPP", "EOVERFLOW", "ETXTBSY"],
    "newfstatat": [*OF_PATHS, "EOVERFLOW"],
    "fstat": ["EIO", "ENOMEM", "EOVERFLOW"],
    "readlink": [*OF_PATHS, "EINVAL"],
    "read": [*OF_TRANSFERS, "EISDIR", "ENOMEM"],
    "pread64": [*OF_TRANSFERS, "EISDIR", "ENOMEM"],
    "write": [*OF_TRANSFERS, "EDQUOT", "EFBIG", "ENOMEM", "ENOSPC", "EPERM"],
    "fsync": [*OF_TRANSFERS, "EDQUOT", "EINVAL", "ENOSPC", "EROFS"],
    "close": [*OF_TRANSFERS, "EDQUOT", "ENOSPC"],
    "mkdir": [*OF_PATHS, *OF_CHANGES, "EEXIST", "EMLINK"],
    "chmod": [*OF_PATHS, "EPERM", "EROFS"],
    "fchmod": ["EACCES", "EIO", "ENOMEM", "EPERM", "EROFS"],
    "flistxattr": ["EIO", "ENOMEM", "EOPNOTSUPP"],
    "fremovexattr": ["EDQUOT", "EIO", "ENODATA", "ENOSPC", "EOPNOTSUPP", "EROFS"],
    "linkat": [*OF_PATHS, *OF_CHANGES, "EEXIST", "EMLINK", "EXDEV"],
    "rename": [*OF_PATHS, *OF_CHANGES, "EBUSY", "EXDEV"],
    "renameat2": [*OF_PATHS, *OF_CHANGES, "EBUSY", "EEXIST", "EINVAL", "ENOSYS", "EXDEV"],
    "unlink": [*OF_PATHS, "EBUSY", "EPERM", "EROFS"],
    "flock": ["EAGAIN", "EINTR", "ENOLCK", "EOPNOTSUPP"],
    "getdents64": ["EIO", "ENOENT", "ENOMEM"],
}
ERRORS["writev"] = ERRORS["write"]

LINE = re.compile(r"(?:\d+ +)?(\w+)\((.*)")


class Call:
    """The `ordinal`-th call of this name in a process, counted from 1. `place` is the path that it refers to, in a form
    that is the same in every run, or None if it does not refer to the home folder."""

    def __init__(self, name, ordinal, place):
        self.name = name
        self.ordinal = ordinal
        self.place = place

    def __str__(self):
        return f"{self.name}({self.place})"


def place_of(arguments, home):
    """The paths below `home` in a call's arguments and result, with the random parts of their names replaced by "*". A
    file without a name counts as its folder, because a call that fails to create it does not show it."""
    found = re.findall(re.escape(str(home)) + r'(/[^">]*)?', arguments)
    names = [re.sub(r"-[0-9A-F]{8}-[0-9A-F-]{27}", "-*", re.sub(r"/\.quillery-[\w-]+", "/.quillery-*", name))
             for name in found]
    names = [re.sub(r"/#\d+.*", "", name) for name in names]
    return " ".join(dict.fromkeys(name or "/" for name in names)) or None


def calls_of(lines, home):
    """The calls in strace's output for a process."""
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
