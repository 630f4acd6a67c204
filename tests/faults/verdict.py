"""What must hold for a home folder after each fault, so that no bookmarks are lost."""
import os
import re
import stat

from scratch_home import BOOKMARK_MODE, FOLDER, NO_SESSION

TEMPORARY_NAME = re.compile(r"(.*/)?\.quillery-temporary-(\w{6}|[0-9a-f]{32}-[0-9a-f]+)")


class Verdict:
    """The problems after a fault: `lost` has those with the user's bookmarks, `flaws` has all others."""

    def __init__(self):
        self.lost = []
        self.flaws = []
        # "replaced" or "written" if the sort overwrote a save that it could not notice: a file that was renamed over the
        # bookmark file, or what was written to the open file.
        self.overwrote = None

    def __bool__(self):
        return not self.lost and not self.flaws


def after_fault(home, sample, result, put=None, unseen=False, gone=False, late=None):
    """Judges a home folder after a run with a fault.

    `put` is a tuple of one: the content that another program gave the bookmark file during the run, None for no file.
    `unseen` is true if that happened after the sort's last check for such a change. `gone` is true if the sort may have
    found no file, so that it wrote a new one. `late` is set if the other program wrote to the file that it had open: then
    a sort that replaced the file must have backed up what was written, if that is "seen".
    """
    verdict = Verdict()
    content = home.content()
    if put:
        if put[0] == sample.saved and content == sample.new and not (late and sample.saved in backups_of(home)):
            verdict.overwrote = "written" if late else "replaced"
        allowed = {put[0], sample.new} if unseen else {put[0]}
    else:
        allowed = {0: {sample.new}, 1: {sample.old}}.get(result.status, {sample.old, sample.new})
    if put and put[0] == sample.saved and sample.saved in backups_of(home):
        allowed.add(sample.sorted_of[sample.saved])  # the sort had not read the file yet
    if content not in allowed:
        verdict.lost.append(f"the bookmark file is {description(content, sample)} after {ending(result)}")
    check_backups(home, sample, verdict, wanted=content == sample.new, torn=late)
    if late == "seen" and verdict.overwrote:
        verdict.lost.append("what another program wrote is neither in the file nor in a backup")
    if not gone:
        check_mode(home, verdict)
    for name in home.leftovers():
        if result.status >= 0 or not TEMPORARY_NAME.fullmatch(name):
            verdict.flaws.append(f"{name} is left after {ending(result)}")
    if result.status == 1 and "quilleryctl: " not in result.text.replace(NO_SESSION, ""):
        verdict.flaws.append(f"it failed without a message: {result.text!r}")
    if result.status > 1:
        verdict.flaws.append(f"it ended with {ending(result)}: {result.text!r}")
    return verdict


def after_next_run(home, sample, before, result, verdict, torn=False):
    """Adds to a verdict the problems after the next run, which was undisturbed and found the bookmark file `before`."""
    if result.status != 0 or home.content() != sample.sorted_of.get(before):
        verdict.lost.append(f"the next run ended with {ending(result)} and leaves "
                            f"{description(home.content(), sample)}: {result.text!r}")
    check_backups(home, sample, verdict, wanted=True, torn=torn)
    for name in home.leftovers():
        verdict.flaws.append(f"{name} is still there after the next run")


def backups_of(home):
    return [path.read_bytes() for path in home.backup_files()]


def check_backups(home, sample, verdict, wanted, torn=False):
    """`torn` is true if another program wrote to the file while it may have been read: then a backup may begin with the
    old file and end with the new one."""
    whole = 0
    for content in backups_of(home):
        if content in sample.sorted_of:
            whole += 1
        elif not (torn and is_torn(content, sample)):
            verdict.lost.append(f"a backup is {description(content, sample)}")
    if wanted and not whole:
        verdict.lost.append("the file is sorted and there is no backup")


def is_torn(content, sample):
    same = len(os.path.commonprefix([content, sample.old]))
    return same > 0 and content[same:] == sample.saved[same:]


def check_mode(home, verdict):
    if home.content() not in (None, FOLDER):
        mode = stat.S_IMODE(home.bookmarks.stat().st_mode)
        if mode != BOOKMARK_MODE:
            verdict.flaws.append(f"the bookmark file has the mode {mode:o}")


def ending(result):
    return f"signal {-result.status}" if result.status < 0 else f"status {result.status}"


def description(content, sample):
    names = {None: "missing", FOLDER: FOLDER, sample.old: "the old file", sample.saved: "the file that Safari saved"}
    if content in names:
        return names[content]
    if content in sample.sorted_of:
        return "sorted"
    whole = any(known.startswith(content) for known in sample.sorted_of)
    return f"{'only the first' if whole else 'some other'} {len(content)} bytes"
