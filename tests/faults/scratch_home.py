"""A home folder with a bookmark file, and its contents after a sort."""
import os
import pathlib
import re
import subprocess

BOOKMARK_MODE = 0o640  # differs from the mode of a new file, so that a lost mode is noticed
FOLDER = "a folder"  # the result of `content` if a folder is in place of the bookmark file
NO_SESSION = "quilleryctl: there is no login session, so Safari could not be looked for and counts as closed\n"
BACKUP_NAME = re.compile(r"Bookmarks-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\.plist")


class Result:
    """How a run ended: its exit status, less than 0 if a signal ended it, and what it printed."""

    def __init__(self, status, text):
        self.status = status
        self.text = text


class ScratchHome:
    def __init__(self, root, content=None):
        """Creates a home folder whose bookmark file has the given bytes; without these the folder exists."""
        self.root = pathlib.Path(root)
        self.bookmarks = self.root / "Library/Safari/Bookmarks.plist"
        self.backups = self.root / "Library/Application Support/Quillery/Backups"
        if content is not None:
            self.bookmarks.parent.mkdir(parents=True)
            self.put(content)

    def put(self, content):
        """Replaces the bookmark file as Safari does: renames a new file over it."""
        new = self.root / "being-saved"
        new.write_bytes(content)
        new.chmod(BOOKMARK_MODE)
        new.rename(self.bookmarks)

    def content(self):
        """The bytes of the bookmark file, FOLDER if it is a folder, or None if it does not exist."""
        if self.bookmarks.is_dir():
            return FOLDER
        return self.bookmarks.read_bytes() if self.bookmarks.exists() else None

    def backup_files(self):
        return [path for path in self.backups.glob("*") if BACKUP_NAME.fullmatch(path.name)]

    def leftovers(self):
        """Files that are neither the bookmark file, nor below it if it is a folder, nor a backup."""
        files = [path for path in self.root.rglob("*") if not path.is_dir() or path.is_symlink()]
        known = {self.bookmarks, *self.backup_files()}
        return [str(path.relative_to(self.root)) for path in files
                if path not in known and self.bookmarks not in path.parents]

    def environment(self, **more):
        """The environment of a program with this home folder and without a session bus."""
        variables = {key: value for key, value in os.environ.items() if key not in ("XDG_CONFIG_HOME", "LD_PRELOAD")}
        nowhere = self.root.parent / "no-session"
        # LeakSanitizer cannot run under strace, and AddressSanitizer wants to be the first library that is loaded.
        return {**variables, "HOME": str(self.root), "XDG_RUNTIME_DIR": str(nowhere),
                "DBUS_SESSION_BUS_ADDRESS": f"unix:path={nowhere}/bus",
                "ASAN_OPTIONS": "detect_leaks=0:verify_asan_link_order=0", **more}

    def run(self, command, timeout=None, preload=None, **more):
        """Runs a command to its end, for `timeout` seconds at most. `preload` is a library to load first, `more` are
        additional environment variables."""
        if preload:
            # The loader takes a space for the end of a path.
            link = self.root.parent / "preloaded.so"
            link.unlink(missing_ok=True)
            link.symlink_to(preload)
            more["LD_PRELOAD"] = str(link)
        done = subprocess.run(command, env=self.environment(**more), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              cwd="/", check=False, timeout=timeout)
        text = done.stdout.decode(errors="replace")
        assert "cannot be preloaded" not in text, text
        return Result(done.returncode, text)
