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


def wait_until_steady(read, what, seconds, pause=1):
    """Returns the result of `read` once it has been the same for this many seconds; raises AssertionError if that takes
    ten times as long."""
    value, since = read(), time.monotonic()

    def is_steady():
        nonlocal value, since
        previous, value = value, read()
        if value != previous:
            since = time.monotonic()
        return time.monotonic() - since >= seconds

    wait_for(is_steady, what, patience=10 * seconds, pause=pause)
    return value


def increase_in(read, seconds):
    """Returns by how much the result of `read` grows in this many seconds."""
    before = read()
    time.sleep(seconds)
    return read() - before
