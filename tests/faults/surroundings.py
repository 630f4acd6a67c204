"""Faults of the disk and of folders. Some need permission to mount, which a machine may lack."""
import os
import subprocess

from points import Point

PAGE = os.sysconf("SC_PAGE_SIZE")
INSIDE = "QUILLERY_FAULTS_MAY_MOUNT"


def enter_namespace(arguments):
    """Restarts this program in a private mount namespace; returns if that is not possible here."""
    if INSIDE in os.environ:
        return
    for options in (["--mount"], ["--user", "--map-root-user", "--mount"]):
        inside = ["unshare", *options]
        try:
            possible = subprocess.run([*inside, "mount", "-t", "tmpfs", "none", "/mnt"], capture_output=True,
                                      check=False)
        except FileNotFoundError:
            return
        if possible.returncode == 0:
            os.environ[INSIDE] = "1"
            os.execvp("unshare", [*inside, *arguments])


def may_mount():
    return INSIDE in os.environ


def mount(*arguments):
    subprocess.run(["mount", *map(str, arguments)], check=True)


def unmount(folder):
    subprocess.run(["umount", "--recursive", str(folder)], check=True)


def filler(home):
    return home.root.parent / "filler"


def leave_pages(home, pages):
    """Fills the disk except for this many pages."""
    with open(filler(home), "wb") as file:
        os.posix_fallocate(file.fileno(), 0, max(1, os.statvfs(home.root).f_bavail - pages) * PAGE)


def leave_files(home, count):
    """Creates files until there is room for only `count` more."""
    filler(home).mkdir()
    for number in range(os.statvfs(home.root).f_favail - count):
        (filler(home) / str(number)).touch()


def on_full_disks(sample):
    pages = len(sample.old) // PAGE + 1
    for left in range(2 * pages + 4):
        yield Point("the disk is nearly full", f"{left} pages free", disk="size=1m",
                    before=lambda home, left=left: leave_pages(home, left),
                    relieve=lambda home: filler(home).unlink())
    for left in range(7):
        yield Point("the disk is nearly out of inodes", f"{left} free", disk="nr_inodes=64",
                    before=lambda home, left=left: leave_files(home, left),
                    relieve=lambda home: subprocess.run(["rm", "-r", str(filler(home))], check=True))


def read_only(name, folder_of):
    """A folder on a read-only file system; the rest of the home is writable."""
    def before(home):
        folder = folder_of(home)
        folder.mkdir(parents=True, mode=0o700, exist_ok=True)
        mount("--bind", folder, folder)
        mount("-o", "remount,bind,ro", folder)

    return Point("a folder is read-only", name, before=before, relieve=lambda home: unmount(folder_of(home)))


def without_permission(name, path_of, mode):
    """A file or folder of the home without some permission; root drops the capabilities that override permissions."""
    modes = {}

    def before(home):
        path = path_of(home)
        if not path.exists():
            path.mkdir(parents=True, mode=0o700)
        modes[path] = path.stat().st_mode & 0o7777
        path.chmod(mode)

    def run(home, command):
        bound = ["setpriv", "--bounding-set=-dac_override,-dac_read_search"] if os.geteuid() == 0 else []
        return home.run([*bound, *command])

    return Point("a permission is missing", name, run, before=before,
                 relieve=lambda home: path_of(home).chmod(modes[path_of(home)]))


def in_read_only_folders():
    yield read_only("of the bookmark file", lambda home: home.bookmarks.parent)
    yield read_only("of the backups", lambda home: home.backups)
    yield read_only("above both", lambda home: home.root / "Library")


def in_forbidden_folders():
    places = {"bookmark file": lambda home: home.bookmarks, "its folder": lambda home: home.bookmarks.parent,
              "backups": lambda home: home.backups, "folder above both": lambda home: home.root / "Library",
              "home": lambda home: home.root}
    for name, path_of in places.items():
        for mode in (0o500, 0o300, 0):
            yield without_permission(f"{name}, {mode:o}", path_of, mode)
