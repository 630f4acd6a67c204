"""Whether a user's bookmarks came through: what must hold of a home folder after each fault."""
import re
import stat

from scratch_home import BOOKMARK_MODE, FOLDER

TEMPORARY_NAME = re.compile(r"(.*/)?\.quillery-\w{6}")


class Verdict:
    """What is wrong: `lost` is about the user's bookmarks, `flaws` is everything else."""

    def __init__(self):
        self.lost = []
        self.flaws = []
        self.overwrote = False  # whether a save that the sort could not know of was replaced

    def __bool__(self):
        return not self.lost and not self.flaws


def after_fault(home, sample, result, put=None, unseen=False, gone=False):
    """Judges a home folder after a run that a fault met.

    `put` is the content that somebody else gave the bookmark file meanwhile (None in a tuple: no file), as a tuple of
    one; `unseen` says that it happened after the sort had looked for such a change for the last time. `gone` says that
    the sort may have found no file, so that what it wrote is a new one.
    """
    verdict = Verdict()
    content = home.content()
    if put:
        verdict.overwrote = put[0] == sample.saved and content == sample.new
        allowed = {put[0], sample.new} if unseen else {put[0]}
    else:
        allowed = {0: {sample.new}, 1: {sample.old}}.get(result.status, {sample.old, sample.new})
    if content not in allowed:
        verdict.lost.append(f"the bookmark file is {description(content, sample)} after {ending(result)}")
    check_backups(home, sample, verdict, wanted=content == sample.new)
    if not gone:
        check_mode(home, verdict)
    for name in home.leftovers():
        if result.status >= 0 or not TEMPORARY_NAME.fullmatch(name):
            verdict.flaws.append(f"{name} is left after {ending(result)}")
    if result.status == 1 and "Bookmarks could not be sorted: " not in result.text:
        verdict.flaws.append(f"a failure without a message: {result.text!r}")
    if result.status > 1:
        verdict.flaws.append(f"it ended with {ending(result)}: {result.text!r}")
    return verdict


def after_next_run(home, sample, before, result, verdict):
    """Adds to a verdict what is wrong after the next run, which nothing hindered, on a bookmark file of the bytes
    `before`."""
    if result.status != 0 or home.content() != sample.sorted_of.get(before):
        verdict.lost.append(f"the next run ended with {ending(result)} and leaves "
                            f"{description(home.content(), sample)}: {result.text!r}")
    check_backups(home, sample, verdict, wanted=True)
    for name in home.leftovers():
        verdict.flaws.append(f"{name} is still there after the next run")


def check_backups(home, sample, verdict, wanted):
    whole = 0
    for path in home.backup_files():
        if path.read_bytes() in sample.sorted_of:
            whole += 1
        else:
            verdict.lost.append(f"a backup holds {description(path.read_bytes(), sample)}")
    if wanted and not whole:
        verdict.lost.append("the file is sorted and there is no backup")


def check_mode(home, verdict):
    if home.content() not in (None, FOLDER):
        mode = stat.S_IMODE(home.bookmarks.stat().st_mode)
        if mode != BOOKMARK_MODE:
            verdict.flaws.append(f"the bookmark file has the mode {mode:o}")


def ending(result):
    return f"signal {-result.status}" if result.status < 0 else f"status {result.status}"


def description(content, sample):
    names = {None: "gone", FOLDER: FOLDER, sample.old: "the old one", sample.saved: "what Safari saved"}
    if content in names:
        return names[content]
    if content in sample.sorted_of:
        return "sorted"
    whole = any(known.startswith(content) for known in sample.sorted_of)
    return f"{'the first' if whole else 'some other'} {len(content)} bytes"
