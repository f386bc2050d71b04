"""Runs tests on a build that holds all mutants: which test reaches which, and which of them are noticed."""

import json
import mmap
import os
import re
import signal
import subprocess
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOM = 1 << 16  # as in mutant.h
AT_ONCE = 2


class Test:
    """A test of ctest's, and how long it took."""

    def __init__(self, description):
        self.name = description["name"]
        self.command = description["command"]
        properties = {entry["name"]: entry["value"] for entry in description.get("properties", [])}
        self.folder = properties.get("WORKING_DIRECTORY")
        self.environment = dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", []))
        self.passes = properties.get("PASS_REGULAR_EXPRESSION", [])
        self.labels = properties.get("LABELS", [])
        self.seconds = 0.0
        self.reached = set()

    def run(self, environment, limit):
        """Whether it passes within `limit` seconds. Whatever it started is gone then."""
        with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryFile() as output:
            environment = {**os.environ, **self.environment, **environment, "TMPDIR": folder,
                           "TEST_TMPDIR": folder}
            process = subprocess.Popen(self.command, cwd=self.folder, env=environment, stdout=output,
                                       stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                                       start_new_session=True)
            try:
                status = process.wait(limit)
            except subprocess.TimeoutExpired:
                status = None
            end(folder)
            process.wait()
            output.seek(0)
            text = output.read().decode(errors="replace")
        if self.passes:
            return status is not None and any(re.search(one, text) for one in self.passes)
        return status == 0


def end(folder):
    """Ends the processes that have this folder of their own in their environment, and those that they start
    meanwhile."""
    mark = f"TMPDIR={folder}\0".encode()
    for _ in range(100):
        found = False
        for process in Path("/proc").glob("[0-9]*"):
            try:
                if mark in (process / "environ").read_bytes():
                    os.kill(int(process.name), signal.SIGKILL)
                    found = True
            except (OSError, ValueError):
                pass
        if not found:
            return


def listed(folder):
    """The tests of a folder of the build."""
    told = subprocess.run(["ctest", "--test-dir", folder, "--show-only=json-v1"], check=True,
                          stdout=subprocess.PIPE).stdout
    # What scripts says nothing of the programs that are compiled here.
    return [test for test in map(Test, json.loads(told)["tests"]) if "scripts" not in test.labels]


def tests(folders, limit):
    """Those of the tests in the folders of the build that pass there within so many seconds, the quickest
    first, with what they reach; and what fails without any mutant."""
    found = [test for folder in folders for test in listed(folder)]

    def reach(test):
        with tempfile.NamedTemporaryFile() as file:
            file.truncate(ROOM)
            start = time.monotonic()
            passed = test.run({"MUTANT": "0", "MUTANTS_REACHED": file.name}, limit)
            test.seconds = time.monotonic() - start
            with mmap.mmap(file.fileno(), ROOM) as reached:
                test.reached = {number for number, byte in enumerate(reached[:]) if byte}
        return passed or test.seconds >= limit, test

    with ThreadPoolExecutor(AT_ONCE) as pool:
        done = list(pool.map(reach, found))
    failed = [test.name for passed, test in done if not passed]
    return sorted((test for _, test in done if test.seconds < limit), key=lambda test: test.seconds), failed


def killer(mutant, quickest):
    """The name of the test that notices the mutant, or None, or "" if none reaches it."""
    reaching = [test for test in quickest if mutant["number"] in test.reached]
    for test in reaching:
        if not test.run({"MUTANT": str(mutant["number"])}, 10 + 5 * test.seconds):
            return test.name
    return None if reaching else ""


def killers(mutants, quickest):
    """Of each mutant, in their order, what killer says."""
    with ThreadPoolExecutor(AT_ONCE) as pool:
        yield from zip(mutants, pool.map(lambda mutant: killer(mutant, quickest), mutants))
