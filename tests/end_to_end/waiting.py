"""Polls for events on a real desktop, with a timeout."""
import time

PATIENCE = 20  # seconds; far longer than any event takes, even on a busy machine
PAUSE = 0.02  # seconds between two polls


def wait_for(condition, what, patience=PATIENCE, pause=PAUSE):
    """Returns the first true result of `condition`; raises AssertionError if there is none within `patience`
    seconds."""
    end = time.monotonic() + patience
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() >= end:
            raise AssertionError(f"waited {patience} s in vain for {what}")
        time.sleep(pause)


def stays(condition, what, seconds):
    """Raises AssertionError if `condition` becomes false within this many seconds."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not condition():
            raise AssertionError(f"it did not last {seconds} s: {what}")
        time.sleep(PAUSE)


def least_increase_in(read, seconds, enough, patience):
    """Watches how much the result of `read` grows in any period of this many seconds. Returns the least increase, as
    soon as one is at most `enough`, or after `patience` seconds."""
    samples, least = [], None
    end = time.monotonic() + patience
    while time.monotonic() < end:
        now, value = time.monotonic(), read()
        samples.append((now, value))
        while len(samples) > 1 and samples[1][0] <= now - seconds:
            samples.pop(0)
        if samples[0][0] <= now - seconds:
            increase = value - samples[0][1]
            least = increase if least is None else min(least, increase)
            if least <= enough:
                break
        time.sleep(1)
    return least
