"""Shared by the measuring scripts of the display servers: transfers between programs, and the delay of events.

`readers` are command lines that write the clipboard's text to their output. `owners` are command lines that copy their
input as text, or functions that take a file and give a context in which a program owns its content."""

import contextlib
import json
import os
import random
import statistics
import subprocess
import threading
import time

from measuring import running_agent

TRANSFER_TIMEOUT = 20  # seconds


@contextlib.contextmanager
def owning(owner, file):
    """Makes the program the clipboard's owner, with the content of the file."""
    if callable(owner):
        with owner(file):
            yield
    else:
        with open(file, "rb") as content:
            subprocess.run(owner, stdin=content, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        yield


def timed(command):
    """Runs the command, output to /dev/null. Returns its milliseconds and peak memory in MiB, None if it fails."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    timeout = threading.Timer(TRANSFER_TIMEOUT, process.kill)  # some wait for ever for an owner that gave up
    timeout.start()
    _, status, usage = os.wait4(process.pid, 0)
    timeout.cancel()
    duration = (time.perf_counter() - start) * 1000
    process.returncode = os.waitstatus_to_exitcode(status)
    return (duration, usage.ru_maxrss / 1024) if process.returncode == 0 else None


def check(reader, file):
    """Compares in another program: memory of this one would count in the peak of its later children."""
    output = subprocess.Popen(reader, stdout=subprocess.PIPE)
    same = subprocess.run(["cmp", "-", file], stdin=output.stdout).returncode == 0
    assert output.wait() == 0 and same, f"{reader} read something else"


def measure_transfers(readers, owners, size, rounds, file, may_fail=()):
    """Measures each reader with each owner, in turns, so that disturbances affect all of them. A transfer with `ours` may
    fail only for those who `may_fail`."""
    with open(file, "wb") as output:
        for _ in range(size // 1024):
            output.write(b"sixteen bytes..\n" * 64)
    times = {(owner, reader): [] for owner in owners for reader in readers}
    peaks = {}
    for _ in range(rounds):
        for owner in owners:
            for reader in readers:
                # A new owner each time, because some are slower the second time.
                with owning(owners[owner], file):
                    measured = timed(readers[reader])
                    if measured is None:
                        assert "ours" not in (owner, reader) or reader in may_fail, (owner, reader)
                        continue
                    times[owner, reader].append(measured[0])
                    peaks[reader] = max(measured[1], peaks.get(reader, 0))
    with owning(owners["ours"], file):
        for reader in readers:
            if times["ours", reader] and not reader.endswith(" kept"):  # which does not go to the output
                check(readers[reader], file)
    for owner in owners:
        with owning(owners[owner], file):
            check(readers["ours"], file)
    print_table(readers, owners, size, times, peaks)


def print_table(readers, owners, size, times, peaks):
    mebibytes = size / (1 << 20)
    print(f"{mebibytes:.0f} MiB, milliseconds (median of {len(times['ours', 'ours'])}, each a whole process)")
    print("  owner    " + "".join(f"{reader + ' reads':>21}" for reader in readers))
    for owner in owners:
        taken = [times[owner, reader] for reader in readers]
        print(f"  {owner:9}" + "".join(f"{statistics.median(one):21.1f}" if one else f"{'fails':>21}" for one in taken))
    print("  peak     " + "".join(f"{peaks.get(reader, 0) / mebibytes:19.2f} x" for reader in readers))


def measure_events(owner, rounds):
    """Measures the time from the owner's copy to the event. Some pauses are shorter than the 0.1 s after an
    announcement."""
    delays = []
    with running_agent() as agent:
        agent.request("ping")
        for number in range(rounds):
            time.sleep(random.uniform(0.05, 0.25))
            subprocess.run(owner, input=str(number).encode(), stdout=subprocess.DEVNULL, check=True)
            owned = time.perf_counter()
            announcement = json.loads(agent.line())
            delays.append((time.perf_counter() - owned) * 1000)
            assert announcement["kind"] == "unsupported"
            assert "text_b64" in json.loads(agent.line())
    delays.sort()
    deciles = " ".join(f"{delays[len(delays) * tenth // 10]:.0f}" for tenth in range(1, 10))
    print(
        f"copy to announcement   {statistics.median(delays):7.2f} ms median of {rounds}, {delays[0]:.1f} to "
        f"{delays[-1]:.1f} ms, deciles {deciles}"
    )
