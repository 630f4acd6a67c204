"""Waiting for what is to happen on a real desktop, for as long as it takes and within a bound."""
import time

PATIENCE = 20  # seconds; far more than anything takes that works, on a busy machine, too
PAUSE = 0.02  # seconds between two looks


def wait_for(condition, what, patience=PATIENCE):
    """Returns the first answer of `condition` that is true; raises AssertionError if there is none in time."""
    end = time.monotonic() + patience
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() >= end:
            raise AssertionError(f"within {patience} s there was not {what}")
        time.sleep(PAUSE)


def stays(condition, what, seconds):
    """Raises AssertionError if `condition` is not true all the time, for that many seconds."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not condition():
            raise AssertionError(f"it did not stay so: {what}")
        time.sleep(PAUSE)
