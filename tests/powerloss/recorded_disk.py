"""A file that records each write and each flush that it receives.

It is the root of a FUSE file system, served by a thread of this process through /dev/fuse. A loop device on top of it
makes it a disk: the kernel then writes each block to it, and flushes it, as it would do with a real disk.
"""
import contextlib
import errno
import os
import stat
import struct
import threading

import system
from crash_states import BlockLog

# The protocol is described in linux/fuse.h. A request is a header and the arguments of its operation; so is a reply.
REQUEST = struct.Struct("=IIQQIIIHH")     # length, operation, number, node, user, group, process, extension, padding
REPLY = struct.Struct("=IiQ")             # length, error, number of the request
VERSIONS = struct.Struct("=IIII")         # major, minor, read-ahead, flags
INITIAL = struct.Struct("=IIIIHHIIHHI28x")  # the same, background requests, congestion, longest write, others
ATTRIBUTES = struct.Struct("=QI4xQQQQQQIIIIIIIIII")  # how long they are valid, and the status of the file
OPENED = struct.Struct("=QII")            # handle, flags, padding
TRANSFER = struct.Struct("=QQIIQII")      # handle, offset, size, flags, owner of locks, flags of the file, padding
WRITTEN = struct.Struct("=II")            # size, padding
STATISTICS = struct.Struct("=QQQQQIIII24x")

GETATTR, SETATTR, OPEN, READ, WRITE, STATFS, RELEASE, FSYNC, FLUSH, INIT, DESTROY = (
    3, 4, 14, 15, 16, 17, 18, 20, 25, 26, 38)
WITHOUT_REPLY = {2, 36, 42}  # FORGET, INTERRUPT, BATCH_FORGET

LONGEST_WRITE = 128 * 1024
MAJOR, MINOR = 7, 31
FOREVER = 3600


class RecordedDisk:
    """While it is entered, `path` is a file with the content of the given SparseImage, and `log` records its changes."""

    def __init__(self, path, image):
        self.path = path
        self.image = image
        self.log = BlockLog()
        self._operations = {
            INIT: self._init, GETATTR: self._attributes, SETATTR: self._attributes, OPEN: self._open,
            READ: self._read, WRITE: self._write, STATFS: self._statistics, FSYNC: self._flush,
            FLUSH: self._nothing, RELEASE: self._nothing, DESTROY: self._nothing,
        }

    def __enter__(self):
        self.path.touch()
        self._device = os.open("/dev/fuse", os.O_RDWR | os.O_CLOEXEC)
        system.mount("recorded", self.path, "fuse", 0,
                     f"fd={self._device},rootmode={stat.S_IFREG | 0o600:o},user_id=0,group_id=0")
        self._server = threading.Thread(target=self._serve)
        self._server.start()
        return self

    def __exit__(self, *_):
        # The kernel may still be detaching the loop device. The server ends when that is done.
        system.unmount(self.path, system.MNT_DETACH)
        self._server.join()
        os.close(self._device)

    def _serve(self):
        while True:
            try:
                request = os.read(self._device, LONGEST_WRITE + 4096)
            except OSError as problem:
                if problem.errno == errno.ENODEV:  # unmounted
                    return
                if problem.errno in (errno.EINTR, errno.ENOENT, errno.EAGAIN):
                    continue
                raise
            self._answer(request)

    def _answer(self, request):
        _, operation, number, *_ = REQUEST.unpack_from(request)
        if operation in WITHOUT_REPLY:
            return
        perform = self._operations.get(operation)
        reply = perform(request[REQUEST.size:]) if perform else b""
        header = REPLY.pack(REPLY.size + len(reply), 0 if perform else -errno.ENOSYS, number)
        with contextlib.suppress(FileNotFoundError):  # who asked does not wait any more
            os.write(self._device, header + reply)

    def _init(self, arguments):
        _, _, readahead, _ = VERSIONS.unpack_from(arguments)
        return INITIAL.pack(MAJOR, MINOR, readahead, 0, 0, 0, LONGEST_WRITE, 1, 0, 0, 0)

    def _attributes(self, _):
        size = self.image.size
        return ATTRIBUTES.pack(FOREVER, 0, 1, size, size // 512, 0, 0, 0, 0, 0, 0, stat.S_IFREG | 0o600, 1, 0, 0, 0,
                               4096, 0)

    def _open(self, _):
        return OPENED.pack(0, 0, 0)

    def _read(self, arguments):
        _, offset, size, *_ = TRANSFER.unpack_from(arguments)
        return self.image.read(offset, size)

    def _write(self, arguments):
        _, offset, size, *_ = TRANSFER.unpack_from(arguments)
        content = arguments[TRANSFER.size:TRANSFER.size + size]
        self.image.write(offset, content)
        self.log.write(offset, content)
        return WRITTEN.pack(size, 0)

    def _statistics(self, _):
        blocks = self.image.size // 4096
        return STATISTICS.pack(blocks, 0, 0, 1, 0, 4096, 255, 4096, 0)

    def _flush(self, _):
        self.log.flush()
        return b""

    def _nothing(self, _):
        return b""
