"""The few system calls and programs that this test needs to make, mount and repair disk images."""
import ctypes
import errno
import os
import struct
import subprocess

libc = ctypes.CDLL(None, use_errno=True)

MS_RDONLY = 1
MNT_DETACH = 2
BLKFLSBUF = 0x1261

# As in linux/loop.h.
LOOP_CONFIGURE = 0x4C0A
LOOP_CTL_GET_FREE = 0x4C82
AUTOCLEAR = 4
LOOP_CONFIG = struct.Struct("=II52xI176x64x")  # file, block size, flags

BLOCK = 4096
GROUP = 2048  # blocks; the second group begins with a copy of the superblock

# Exit statuses of e2fsck.
CORRECTED = 1
SHOULD_RESTART = 2


def check(result, what):
    if result != 0:
        problem = ctypes.get_errno()
        raise OSError(problem, f"{what}: {os.strerror(problem)}")


def mount(source, target, kind, flags, options):
    check(libc.mount(str(source).encode(), str(target).encode(), kind.encode(), ctypes.c_ulong(flags),
                     options.encode()), f"mounting {source}")


def unmount(target, flags=0):
    check(libc.umount2(str(target).encode(), flags), f"unmounting {target}")


def run(*command):
    done = subprocess.run([*map(str, command)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False)
    if done.returncode != 0:
        raise OSError(f"{command[0]} failed: {done.stdout.strip()}")
    return done.stdout


class LoopDevice:
    """A block device whose content is a file. The kernel detaches it when the last process that has it open ends, also
    if that is killed."""

    def __init__(self, file):
        with open(file, "r+b") as content, open("/dev/loop-control", "rb") as control:
            while True:
                number = libc.ioctl(control.fileno(), LOOP_CTL_GET_FREE)
                check(min(number, 0), "looking for a loop device")
                self.path = f"/dev/loop{number}"
                self._device = os.open(self.path, os.O_RDWR | os.O_CLOEXEC)
                if libc.ioctl(self._device, LOOP_CONFIGURE, LOOP_CONFIG.pack(content.fileno(), 0, AUTOCLEAR)) == 0:
                    return
                os.close(self._device)
                if ctypes.get_errno() != errno.EBUSY:  # another process was faster
                    check(-1, f"attaching {self.path}")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        os.close(self._device)

    def forget(self):
        """Drops what the kernel has cached of the device, because its file was changed."""
        check(libc.ioctl(self._device, BLKFLSBUF, 0), f"flushing {self.path}")


def make_file_system(image, size, content):
    """Makes an ext4 image with the files of the folder `content`, everything initialised, so that the kernel writes
    nothing of its own later."""
    with open(image, "wb") as file:
        file.truncate(size)
    run("mkfs.ext4", "-q", "-b", BLOCK, "-g", GROUP, "-J", "size=4",
        "-E", "nodiscard,lazy_itable_init=0,lazy_journal_init=0", "-d", content, image)


def repair(image):
    """Replays the journal of an image and repairs whatever is left to repair. If the superblock is torn, as it has two
    sectors, does so with its copy."""
    done = e2fsck(image)
    if not repaired(done):
        done = e2fsck(image, "-b", GROUP, "-B", BLOCK)
    if not repaired(done):
        raise OSError(f"e2fsck failed with status {done.returncode}: {done.stdout.decode(errors='replace')}")


def e2fsck(image, *options):
    return subprocess.run(["e2fsck", "-f", "-y", *map(str, options), str(image)], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False)


def repaired(done):
    return done.returncode & ~(CORRECTED | SHOULD_RESTART) == 0
