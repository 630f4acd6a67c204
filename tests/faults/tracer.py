"""Runs a program under strace, which makes one of its system calls fail, or kills or stops the program there."""
import os
import re
import signal
import subprocess

from scratch_home import Result
from system_calls import calls_of


class Trace:
    """The result of a traced run: how the program ended, and strace's output."""

    def __init__(self, result, lines):
        self.result = result
        self.lines = lines


def run(home, command, *options, when_stopped=None):
    """Runs a command under strace. Calls `when_stopped` with the process ID when SIGSTOP has stopped the program."""
    reading, writing = os.pipe()
    strace = ["strace", "-f", "-y", "-s", "0", "-o", f"/dev/fd/{writing}", *options, "--", *command]
    with subprocess.Popen(strace, env=home.environment(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, cwd="/",
                          pass_fds=[writing]) as process:
        os.close(writing)
        lines = []
        with os.fdopen(reading, encoding="utf-8", errors="replace") as output:
            for line in output:
                lines.append(line.rstrip("\n"))
                if when_stopped and "--- stopped by SIGSTOP ---" in line:
                    when_stopped(int(line.split()[0]))
        text = process.stdout.read().decode(errors="replace")
    return Trace(Result(process.returncode, text), lines)


def all_calls(home, command):
    """The system calls of an undisturbed run."""
    trace = run(home, command, "-e", "trace=all")
    assert trace.result.status == 0, trace.result.text
    return calls_of(trace.lines, home.root)


def failing(home, command, call, error):
    trace = tampering(home, command, call, f"error={error}")
    require(f"{error} " in hit(trace, home, call) and "(INJECTED)" in hit(trace, home, call), call, trace)
    return trace.result


def killed_before(home, command, call):
    trace = tampering(home, command, call, "signal=SIGKILL")
    require(hit(trace, home, call).endswith("= ?") and "killed by SIGKILL" in trace.lines[-1], call, trace)
    return Result(-signal.SIGKILL, trace.result.text)


def stopped_after(home, command, call, action):
    """Stops the program once the call has returned and calls `action` with its process ID. Returns the result."""
    trace = tampering(home, command, call, "signal=SIGSTOP", action)
    require(re.search(r"\) += -?\d+", hit(trace, home, call)), call, trace)
    return trace.result


def interrupted_after(home, command, call, action):
    """Calls `action` between this call of the program and the next one, then lets the program continue."""
    def act_and_continue(process):
        action()
        os.kill(process, signal.SIGCONT)

    return stopped_after(home, command, call, act_and_continue)


def killed_after(home, command, call):
    result = stopped_after(home, command, call, lambda process: os.kill(process, signal.SIGKILL))
    return Result(-signal.SIGKILL, result.text)


def tampering(home, command, call, change, when_stopped=None):
    return run(home, command, "-e", f"trace={call.name}", "-e", f"inject={call.name}:{change}:when={call.ordinal}",
               when_stopped=when_stopped)


def hit(trace, home, call):
    """The line of the call that strace should tamper with; empty if a different call was in its place."""
    calls = [line for line in trace.lines if calls_of([line], home.root)]
    line = calls[call.ordinal - 1] if len(calls) >= call.ordinal else ""
    return line if line and calls_of([line], home.root)[0].place == call.place else ""


def require(condition, call, trace):
    """Raises RuntimeError unless the condition holds: then the run made other calls than the traced one, so it proves
    nothing."""
    if not condition:
        raise RuntimeError(f"strace did not reach {call}:\n" + "\n".join(trace.lines[-12:]) + trace.result.text)
