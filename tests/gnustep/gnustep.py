#!/usr/bin/python3
"""Runs the macOS layer over GNUstep: the suites of interfaces, conversions and lifetimes, the companion and the
application. Each program starts on a headless display.

usage: gnustep.py BUILD [--fast]

With --fast, stops at the first failure, and takes a suite that runs for two minutes for one that hangs.
"""
import argparse
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent


def left_out():
    """The names of the tests that are left out, and their reasons."""
    for paragraph in re.split(r"\n\s*\n", (HERE / "left_out.txt").read_text(encoding="utf-8").strip()):
        lines = paragraph.splitlines()
        names = [line for line in lines if not line.startswith((" ", "#"))]
        if names:
            yield names, " ".join(line.strip() for line in lines if line.startswith(" "))


def display(stack):
    """Starts a headless display. Returns its name."""
    reader, writer = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1024x768x24", "-nolisten", "tcp"],
                              pass_fds=[writer], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(writer)
    stack.append(server)
    with os.fdopen(reader) as output:
        return f":{output.readline().strip()}"


def unit_tests(build, environment):
    names = [name for names, _ in left_out() for name in names]
    program = build / "tests/gnustep/gnustep_tests"
    listed = subprocess.run([program, "--gtest_list_tests"], env=environment, capture_output=True, text=True, check=True)
    for name in names:
        if f"  {name.split('.')[1]}/" not in listed.stdout:
            raise SystemExit(f"there is no test {name}, which left_out.txt names")
    return [program, "--gtest_brief=1", "--gtest_filter=-" + ":".join(f"*{name}/*" for name in names)]


def run(name, command, environment, patience):
    start = time.monotonic()
    try:
        result = subprocess.run(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True, errors="replace", timeout=patience)
    except subprocess.TimeoutExpired as expired:
        return name, "hangs", patience, (expired.stdout or b"").decode(errors="replace")
    return name, result.returncode, time.monotonic() - start, result.stdout


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--fast", action="store_true")
    options = parser.parse_args()
    build = options.build.resolve()
    servers = []
    try:
        with tempfile.TemporaryDirectory(prefix="quillery-") as home, concurrent.futures.ThreadPoolExecutor(2) as pool:
            environment = {**os.environ, "HOME": home, "LANG": "C.UTF-8", "DISPLAY": display(servers)}
            environment.pop("QUILLERY_RIG", None)
            python = "/usr/bin/python3"
            units = unit_tests(build, environment) + ["--gtest_fail_fast"] * options.fast
            arguments = [build] + ["--failfast"] * options.fast
            stages = [("interfaces, conversions, lifetimes", units),
                      ("companion", [python, HERE / "companion_test.py", *arguments]),
                      ("application", [python, HERE / "scenarios_test.py", *arguments])]
            failed = False
            run_all = map if options.fast else pool.map  # one after another, the fastest first, or two at a time
            patience = 120 if options.fast else 900
            for name, status, seconds, output in run_all(lambda stage: run(*stage, environment, patience), stages):
                results = [line for line in output.splitlines() if re.match(r"\[  PASSED|Ran |OK", line)]
                print(f"{name}: {', '.join(results) if status == 0 else 'FAILED'} ({seconds:.0f} s)", flush=True)
                if status != 0:
                    failed = True
                    print("\n".join(line for line in output.splitlines() if "autorelease called without" not in line))
                    if options.fast:
                        return 1
    finally:
        for server in servers:
            server.terminate()
            server.wait()
    print("Left out, because")
    for names, reason in left_out():
        print(f"  {', '.join(names)}: {reason}")
    return int(failed)


if __name__ == "__main__":
    sys.exit(main())
