"""The contents that a disk may have after a power loss, computed from the log of what was written to it.

A disk may write in any order, and in units of a sector, whatever it was given since the last flush. Once a flush has
returned, everything that was written before it is on the disk.
"""
import collections
import random

SECTOR = 512
KINDS = ("all writes up to a point", "one write dropped", "one write torn", "a random part")

Write = collections.namedtuple("Write", "offset content")


class Epoch:
    """The writes between two flushes. `reported` is true if the program reported success before the epoch ended, so
    that a power loss in the epoch must not undo what it reported."""

    def __init__(self, writes, reported):
        self.writes = writes
        self.reported = reported


class BlockLog:
    """Writes and flushes in the order in which the disk received them, and the time of the program's report."""

    def __init__(self):
        self.epochs = []
        self._writes = []
        self._reported = False

    def write(self, offset, content):
        self._writes.append(Write(offset, content))

    def flush(self):
        if self._writes:
            self.epochs.append(Epoch(self._writes, self._reported))
            self._writes = []

    def report(self):
        self._reported = True

    def finish(self):
        """Ends the last epoch, and adds one in which everything is on the disk."""
        self.flush()
        self.epochs.append(Epoch([], self._reported))


class State:
    """What a power loss in an epoch leaves: everything before the epoch, and the kept parts of its writes."""

    def __init__(self, kind, epoch, kept):
        self.kind = kind
        self.epoch = epoch  # its number
        self.kept = kept    # pairs of the number of a write and its sectors that are kept, None for all

    def __str__(self):
        parts = [str(write) if sectors is None else f"{write}[{','.join(map(str, sectors))}]"
                 for write, sectors in self.kept]
        return f"{self.kind}: epoch {self.epoch}, writes {' '.join(parts) or 'none'}"


def sectors_in(write):
    return (len(write.content) + SECTOR - 1) // SECTOR


def prefixes(number, epoch):
    for count in range(len(epoch.writes) or 1):
        yield State(KINDS[0], number, [(write, None) for write in range(count)])


def dropped(number, epoch):
    # Dropping the last write gives one of the prefixes.
    for missing in range(len(epoch.writes) - 1):
        yield State(KINDS[1], number, [(write, None) for write in range(len(epoch.writes)) if write != missing])


def some_sectors(write, lot):
    """Some of a write's sectors, at least one and not all: the first ones, or any."""
    count = sectors_in(write)
    kept = lot.randrange(1, count)
    return tuple(range(kept)) if lot.random() < 0.5 else tuple(sorted(lot.sample(range(count), kept)))


def torn(number, epoch, lot):
    """For each write of several sectors one state in which it is torn and no later write is kept, and one in which all
    others are kept."""
    for torn_one, write in enumerate(epoch.writes):
        if sectors_in(write) < 2:
            continue
        before = [(other, None) for other in range(torn_one)]
        after = [(other, None) for other in range(torn_one + 1, len(epoch.writes))]
        yield State(KINDS[2], number, [*before, (torn_one, some_sectors(write, lot))])
        if after:
            yield State(KINDS[2], number, [*before, (torn_one, some_sectors(write, lot)), *after])


def random_parts(number, epoch, lot):
    """As many states as the epoch has writes, with any part of any of its writes."""
    for _ in range(len(epoch.writes) if len(epoch.writes) > 1 else 0):
        kept = []
        for index, write in enumerate(epoch.writes):
            fate = lot.random()
            if fate < 0.5:
                kept.append((index, None))
            elif fate < 0.75 and sectors_in(write) > 1:
                kept.append((index, some_sectors(write, lot)))
        yield State(KINDS[3], number, kept)


def states(log, seed):
    """All states of a log, in the order of their epochs. Which parts are torn is drawn with the seed."""
    lot = random.Random(seed)
    for number, epoch in enumerate(log.epochs):
        yield from prefixes(number, epoch)
        yield from dropped(number, epoch)
        yield from torn(number, epoch, lot)
        yield from random_parts(number, epoch, lot)


def sampled(all_states, count, seed):
    """At most `count` of the states, drawn with the seed, in their order."""
    if len(all_states) <= count:
        return all_states
    chosen = random.Random(seed).sample(range(len(all_states)), count)
    return [all_states[index] for index in sorted(chosen)]


def images(base, log, chosen):
    """Yields each chosen state, in the order of their epochs, and its image. `base` is the disk before the log."""
    durable = base.copy()
    epoch = 0
    for state in chosen:
        while epoch < state.epoch:
            for write in log.epochs[epoch].writes:
                durable.write(*write)
            epoch += 1
        image = durable.copy()
        for index, sectors in state.kept:
            keep(image, log.epochs[epoch].writes[index], sectors)
        yield state, image


def keep(image, write, sectors):
    if sectors is None:
        image.write(*write)
        return
    for sector in sectors:
        start = sector * SECTOR
        image.write(write.offset + start, write.content[start:start + SECTOR])
