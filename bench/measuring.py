"""Shared by the measuring scripts: running an agent and reading its costs from the system."""

import base64
import contextlib
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.append(str(ROOT / "Tests/Support"))
from agent_process import AgentProcess  # noqa: E402
from pictures import make_png  # noqa: E402

PROGRAMS = ROOT / "build/bench/bin"


def median_milliseconds(action, rounds):
    times = []
    for _ in range(rounds):
        start = time.perf_counter()
        action()
        times.append(time.perf_counter() - start)
    return statistics.median(times) * 1000


@contextlib.contextmanager
def running_agent():
    agent = AgentProcess([PROGRAMS / "TavelClipboardAgent"])
    try:
        yield agent
        agent.end()
    finally:
        agent.kill()


def threads(pid):
    """Returns the directories of the process's threads in /proc."""
    return list(pathlib.Path(f"/proc/{pid}/task").iterdir())


def processor_milliseconds(pid):
    """Returns the time of all threads. The process's own schedstat has that of its first one only."""
    return sum(int((thread / "schedstat").read_text().split()[0]) for thread in threads(pid)) / 1e6


def private_mebibytes(pid, kind):
    rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
    return sum(int(line.split()[1]) for line in rollup.splitlines() if line.startswith(f"Private_{kind}:")) / 1024


def peak_mebibytes(pid):
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return next(int(line.split()[1]) for line in status.splitlines() if line.startswith("VmHWM:")) / 1024


def measure_start(rounds=40):
    def empty_program():
        subprocess.run([PROGRAMS / "empty-program"], check=True)

    def agent_to_first_reply():
        # The thread and the file of AgentProcess would add a tenth to the time.
        agent = subprocess.Popen([PROGRAMS / "TavelClipboardAgent"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        agent.stdin.write(b'{"command":"ping","request_id":1}\n')
        agent.stdin.flush()
        agent.stdout.readline()
        started.append(agent)

    started = []
    empty = median_milliseconds(empty_program, rounds)
    agent = median_milliseconds(agent_to_first_reply, rounds)
    for process in started:
        process.stdin.close()
        process.wait()
        process.stdout.close()
    print(f"start to first reply   {agent:7.2f} ms   {agent / empty:.2f} x an empty program ({empty:.2f} ms)")


def largest_picture():
    """Returns a PNG of 64 MiB: one grey pixel, and random bytes after the end of the image, which readers ignore."""
    picture = make_png(1, 1, b"\0\x80\x80\x80")
    return picture + os.urandom((64 << 20) - len(picture))


def seconds_of_bare_read(line):
    """Returns the time in which a program reads the line, and does nothing else."""
    reader = subprocess.Popen([PROGRAMS / "bare-reader"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    assert reader.stdout.readline() == b"ready\n"
    start = time.perf_counter()
    data = memoryview(line)
    while data:
        data = data[os.write(reader.stdin.fileno(), data):]
    assert reader.stdout.readline() == b"read\n"
    duration = time.perf_counter() - start
    reader.communicate()
    return duration


def measure_write_image_data(memory_limit, rounds=15):
    """Measures the time from the first byte of a line of 91 MB to the reply, with a new agent for each round, in turns
    with a program that only reads the line. Slashes are escaped as JSON writers of the home platform do."""
    encoded = base64.b64encode(largest_picture()).replace(b"/", b"\\/")
    line = b'{"command":"write_image_data","request_id":1,"image_b64":"' + encoded + b'"}\n'
    times, bare, peaks = [], [], []
    for _ in range(rounds):
        bare.append(seconds_of_bare_read(line) * 1000)
        with running_agent() as agent:
            agent.request("ping")
            start = time.perf_counter()
            agent.send(line)
            reply = agent.reply(1)
            times.append((time.perf_counter() - start) * 1000)
            peaks.append(peak_mebibytes(agent.pid))
            assert reply["ok"], reply
    median, bare_median = statistics.median(times), statistics.median(bare)
    print(
        f"write_image_data 64 MiB{median:7.2f} ms median, {min(times):.2f} at least; {median / bare_median:.2f} x only "
        f"reading ({bare_median:.2f} ms, {min(bare):.2f} at least); "
        f"peak memory {max(peaks):.1f} MiB, {max(peaks) / 64:.2f} x the picture (limit {memory_limit})"
    )


def measure_idling(seconds, prepare=lambda agent: agent.request("ping")):
    with running_agent() as agent:
        prepare(agent)
        before = processor_milliseconds(agent.pid)
        time.sleep(seconds)
        spent = processor_milliseconds(agent.pid) - before
        print(f"idle processor time    {spent * 60 / seconds:7.2f} ms a minute (measured over {seconds} s)")
        print(f"idle private memory    {private_mebibytes(agent.pid, 'Dirty'):7.2f} MiB")
        # Pages of libraries count as private only while no other program maps them.
        print(f"idle unshared files    {private_mebibytes(agent.pid, 'Clean'):7.2f} MiB of program and libraries")
        if shutil.which("strace"):
            count_system_calls(agent.pid)
        else:
            print("idle system calls      not counted: strace is not here")


def count_system_calls(pid, seconds=5):
    by_name = system_calls(pid, seconds)
    print(f"idle system calls      {sum(by_name.values()):7d} in {seconds} s   {by_name}")


def system_calls(pid, seconds):
    """Returns how many system calls of each name the process ends meanwhile, in all its threads. Needs strace."""
    with tempfile.NamedTemporaryFile("r") as summary:
        tracer = subprocess.Popen(
            ["strace", "-qq", "-f", "-c", "-o", summary.name, "-p", str(pid)], stderr=subprocess.DEVNULL
        )
        time.sleep(seconds)
        tracer.terminate()
        tracer.wait()
        # Share of time, seconds, microseconds a call, calls, errors (if there are any), name.
        rows = [line.split() for line in summary if line.strip() and line.split()[-1] not in ("syscall", "total")]
    return {row[-1]: int(row[3]) for row in rows if not row[0].startswith("-")}
