#!/usr/bin/env python3
"""Tests of what the power-loss test computes from a record, and of what it calls a loss. Needs no disk."""
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import crash_states  # noqa: E402
import recorded_disk  # noqa: E402
from crash_states import KINDS, BlockLog  # noqa: E402
from scenarios import FIRST_BACKUP, Scenario, ScratchHome, problems  # noqa: E402
from sparse_image import PAGE, SparseImage  # noqa: E402

SIZE = 8 * PAGE


def image_of(*parts):
    """An image with these pairs of an offset and a content."""
    image = SparseImage(SIZE)
    for offset, content in parts:
        image.write(offset, content)
    return image


def content(image):
    return image.read(0, SIZE)


class Images(unittest.TestCase):
    def test_are_zeros_at_first(self):
        self.assertEqual(content(image_of()), bytes(SIZE))

    def test_keep_writes_across_pages(self):
        expected = bytearray(SIZE)
        image = image_of()
        for offset, size in ((10, 20), (PAGE - 3, 9), (100, 2 * PAGE), (SIZE - 5, 5), (15, 2)):
            written = bytes((offset + index) % 251 + 1 for index in range(size))
            expected[offset:offset + size] = written
            image.write(offset, written)
        self.assertEqual(content(image), bytes(expected))
        self.assertEqual(image.read(PAGE - 1, 3), bytes(expected[PAGE - 1:PAGE + 2]))

    def test_do_not_change_with_their_copies(self):
        image = image_of((0, b"old"))
        image.copy().write(0, b"new")
        self.assertEqual(image.read(0, 3), b"old")

    def test_are_saved_whole_over_other_content(self):
        image = image_of((5, b"five"), (SIZE - 1, b"z"))
        with tempfile.NamedTemporaryFile() as file:
            file.write(b"x" * 2 * SIZE)
            image.save(file)
            self.assertEqual(pathlib.Path(file.name).read_bytes(), content(image))
            self.assertEqual(content(SparseImage.from_file(pathlib.Path(file.name))), content(image))


def logged(*steps):
    """A log of steps: bytes that are written, each to a page of its own, "flush" and "report"."""
    log = BlockLog()
    for place, step in enumerate(steps):
        if isinstance(step, bytes):
            log.write(place * PAGE, step)
        else:
            getattr(log, step)()
    log.finish()
    return log


def kept(log, kind):
    """What the states of a kind keep: for each the epoch and the numbers of whole writes."""
    return [(state.epoch, tuple(write for write, _ in state.kept)) for state in crash_states.states(log, "seed")
            if state.kind == kind]


class Logs(unittest.TestCase):
    def test_end_an_epoch_at_each_flush(self):
        log = logged(b"a", b"b", "flush", b"c", "flush", "flush", b"d")
        self.assertEqual([[write.content for write in epoch.writes] for epoch in log.epochs],
                         [[b"a", b"b"], [b"c"], [b"d"], []])

    def test_promise_the_report_from_its_epoch_on(self):
        log = logged(b"a", "flush", b"b", "report", b"c", "flush", b"d")
        self.assertEqual([epoch.reported for epoch in log.epochs], [False, True, True, True])

    def test_promise_nothing_before_a_report_after_the_flush(self):
        self.assertEqual([epoch.reported for epoch in logged(b"a", "flush", "report").epochs], [False, True])


class States(unittest.TestCase):
    def test_have_every_prefix(self):
        log = logged(b"a", b"b", "flush", b"c")
        self.assertEqual(kept(log, KINDS[0]), [(0, ()), (0, (0,)), (1, ()), (2, ())])

    def test_drop_every_single_write_but_the_last(self):
        log = logged(b"a", b"b", b"c", "flush", b"d")
        self.assertEqual(kept(log, KINDS[1]), [(0, (1, 2)), (0, (0, 2))])

    def test_tear_every_write_of_several_sectors(self):
        log = logged(b"a" * 2048, b"b" * 512, b"c" * 1024)
        torn = [(index, sectors) for state in crash_states.states(log, "seed") if state.kind == KINDS[2]
                for index, sectors in state.kept if sectors is not None]
        self.assertEqual([index for index, _ in torn], [0, 0, 2])
        for index, sectors in torn:
            self.assertTrue(0 < len(sectors) < (4, 1, 2)[index], sectors)

    def test_are_the_same_for_the_same_seed(self):
        log = logged(*[b"x" * 4096] * 20)
        texts = [[str(state) for state in crash_states.states(log, seed)] for seed in ("1", "1", "2")]
        self.assertEqual(texts[0], texts[1])
        self.assertNotEqual(texts[0], texts[2])

    def test_are_sampled_in_their_order(self):
        self.assertEqual(crash_states.sampled([1, 2, 3], 3, "seed"), [1, 2, 3])
        chosen = crash_states.sampled(list(range(100)), 10, "seed")
        self.assertEqual((len(set(chosen)), chosen), (10, sorted(chosen)))


class Replay(unittest.TestCase):
    def contents(self, log, base):
        return {str(state): content(image)
                for state, image in crash_states.images(base, log, crash_states.states(log, "seed"))}

    def test_keeps_what_was_flushed_and_the_kept_writes(self):
        log = logged(b"a", b"b", "flush", b"c", b"d")
        found = self.contents(log, image_of((7 * PAGE, b"base")))
        flushed = [(7 * PAGE, b"base"), (0, b"a"), (PAGE, b"b")]
        self.assertEqual(found[f"{KINDS[0]}: epoch 0, writes 0"], content(image_of(*flushed[:2])))
        self.assertEqual(found[f"{KINDS[0]}: epoch 1, writes none"], content(image_of(*flushed)))
        self.assertEqual(found[f"{KINDS[1]}: epoch 1, writes 1"], content(image_of(*flushed, (4 * PAGE, b"d"))))
        self.assertEqual(found[f"{KINDS[0]}: epoch 2, writes none"],
                         content(image_of(*flushed, (3 * PAGE, b"c"), (4 * PAGE, b"d"))))

    def test_applies_writes_to_the_same_place_in_their_order(self):
        log = BlockLog()
        for text in (b"first", b"later"):
            log.write(0, text)
        log.finish()
        self.assertEqual(self.contents(log, image_of())[f"{KINDS[0]}: epoch 1, writes none"][:5], b"later")

    def test_keeps_only_the_kept_sectors_of_a_torn_write(self):
        log = logged(b"".join(bytes([number]) * 512 for number in range(1, 5)))
        image = image_of((0, b"o" * 2048))
        crash_states.keep(image, log.epochs[0].writes[0], (0, 2))
        self.assertEqual(image.read(0, 2048), b"\1" * 512 + b"o" * 512 + b"\3" * 512 + b"o" * 512)

    def test_does_not_change_the_base(self):
        base = image_of((0, b"base"))
        self.contents(logged(b"new", "flush", b"newer"), base)
        self.assertEqual(content(base), content(image_of((0, b"base"))))


class RecordedDisk(unittest.TestCase):
    def test_packs_replies_as_the_kernel_expects_them(self):
        self.assertEqual((recorded_disk.REQUEST.size, recorded_disk.REPLY.size), (40, 16))
        self.assertEqual((recorded_disk.INITIAL.size, recorded_disk.ATTRIBUTES.size), (64, 16 + 88))
        self.assertEqual((recorded_disk.TRANSFER.size, recorded_disk.STATISTICS.size), (40, 80))


class Verdict(unittest.TestCase):
    OLD, NEW = b"the old bookmarks", b"the new bookmarks"

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name) / "home"

    def problems(self, *, file, backups=(), reported=False, scenario=None):
        """The problems with a home that has this bookmark file and backups of these contents."""
        home = ScratchHome(self.root, file or b"")
        if file is None:
            home.bookmarks.unlink()
        home.backups.mkdir(parents=True)
        for number, backup in enumerate(backups):
            (home.backups / FIRST_BACKUP.replace("-0000-", f"-000{number}-", 1)).write_bytes(backup)
        return list(problems(home, scenario or Scenario("sort", [], self.OLD, self.NEW), reported))

    def test_accepts_the_old_file_with_and_without_a_backup(self):
        self.assertEqual(self.problems(file=self.OLD), [])

    def test_accepts_the_new_file_with_a_backup(self):
        self.assertEqual(self.problems(file=self.NEW, backups=[self.OLD], reported=True), [])

    def test_misses_the_backup_of_a_new_file(self):
        self.assertEqual(len(self.problems(file=self.NEW)), 1)

    def test_rejects_a_partial_file(self):
        self.assertEqual(self.problems(file=self.NEW[:5], backups=[self.OLD]), ["the bookmark file is 5 bytes"])

    def test_rejects_a_file_of_zeros(self):
        self.assertEqual(self.problems(file=bytes(5), backups=[self.OLD]),
                         ["the bookmark file is 5 bytes, all zeros"])

    def test_rejects_a_missing_file(self):
        self.assertEqual(self.problems(file=None, backups=[self.OLD]), ["the bookmark file is missing"])

    def test_rejects_an_empty_backup(self):
        self.assertEqual(len(self.problems(file=self.OLD, backups=[b""])), 1)

    def test_rejects_the_old_file_after_the_report(self):
        self.assertEqual(len(self.problems(file=self.OLD, backups=[self.OLD], reported=True)), 1)

    def test_accepts_no_file_where_there_was_none(self):
        restore = Scenario("restore", [], None, self.NEW, backups={FIRST_BACKUP: self.NEW})
        self.assertEqual(self.problems(file=None, backups=[self.NEW], scenario=restore), [])

    def test_misses_a_backup_that_was_there_before(self):
        restore = Scenario("restore", [], None, self.NEW, backups={FIRST_BACKUP: self.NEW})
        self.assertEqual(len(self.problems(file=None, scenario=restore)), 1)


if __name__ == "__main__":
    unittest.main()
