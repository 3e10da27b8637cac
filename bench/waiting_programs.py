"""The programs of bench/measure-waiting: an agent that is read without another thread, and a clipboard's owner."""

import contextlib
import json
import os
import pathlib
import random
import select
import subprocess
import time

from agent_process import AgentProcess
from measuring import PROGRAMS

TIMEOUT = 120  # seconds; longer than any wait that the agent allows itself
AGENT = PROGRAMS / "TavelClipboardAgent"


def milliseconds_since(nanoseconds):
    return (time.monotonic_ns() - nanoseconds) / 1e6


class DirectAgent:
    """An agent whose output the calling thread reads itself. The thread of AgentProcess, which reads for the tests,
    would add about as much to a short time as the agent takes."""

    def __init__(self, *arguments):
        self.process = subprocess.Popen([AGENT, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0)
        self.pid = self.process.pid
        self._output = self.process.stdout.fileno()
        self._rest = b""
        self._pings = 0

    def send(self, **command):
        self.process.stdin.write(json.dumps(command).encode() + b"\n")

    def line(self):
        """Returns the next line of output."""
        parts = [self._rest]
        while b"\n" not in parts[-1]:
            ready, _, _ = select.select([self._output], [], [], TIMEOUT)
            assert ready, f"the agent says nothing for {TIMEOUT} s"
            parts.append(os.read(self._output, 1 << 20))
            assert parts[-1], "the agent has ended"
        end = parts[-1].index(b"\n") + 1
        self._rest = parts[-1][end:]
        return b"".join([*parts[:-1], parts[-1][:end]])

    def event(self):
        message = json.loads(self.line())
        assert "event" in message, message
        return message

    def ping(self):
        """Returns the milliseconds until the reply. Passes over the events before it."""
        self._pings += 1
        start = time.monotonic_ns()
        self.send(command="ping", request_id=self._pings)
        while True:
            line = self.line()
            duration = milliseconds_since(start)
            message = json.loads(line)
            if "event" not in message:
                assert message["request_id"] == self._pings and message["ok"], message
                return duration

    def quit(self):
        """Returns the milliseconds from the command until the process has ended."""
        with contextlib.closing(ProcessEnd(self.pid)) as end:
            start = time.monotonic_ns()
            self.send(command="quit", request_id=1 << 20)
            outputs = [self._output]
            while not end.wait(*outputs):
                if not os.read(self._output, 1 << 20):
                    outputs = []
            duration = milliseconds_since(start)
        assert self.process.wait() == 0, self.process.returncode
        return duration

    def release(self):
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()


@contextlib.contextmanager
def direct_agent(*arguments):
    """Gives an agent that has started."""
    agent = DirectAgent(*arguments)
    try:
        agent.ping()
        yield agent
    finally:
        agent.release()


class ProcessEnd:
    """Waits for the end of a process, a child or not."""

    def __init__(self, pid):
        self._descriptor = os.pidfd_open(pid)

    def wait(self, *others):
        """Whether the process has ended; returns as soon as it has, or one of the other descriptors is readable."""
        ready, _, _ = select.select([self._descriptor, *others], [], [], TIMEOUT)
        assert ready, f"the process has not ended after {TIMEOUT} s"
        return self._descriptor in ready

    def close(self):
        os.close(self._descriptor)


@contextlib.contextmanager
def end_after_parent():
    """Starts an agent below another process. Gives the function that kills this process, while the agent's pipes stay
    open here, and returns the milliseconds until the agent has ended."""
    agent = AgentProcess([AGENT], below_shell=True)
    try:
        agent.request("ping")
        (child,) = pathlib.Path(f"/proc/{agent.pid}/task/{agent.pid}/children").read_text().split()
        with contextlib.closing(ProcessEnd(int(child))) as end:

            def kill_parent():
                start = time.monotonic_ns()
                agent.kill_shell()
                end.wait()
                return milliseconds_since(start)

            yield kill_parent
    finally:
        agent.kill()


class Owner:
    """A hostile-owner on the display of the environment."""

    def __init__(self, *arguments):
        self._process = subprocess.Popen(
            [PROGRAMS / "hostile-owner", *map(str, arguments)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.counts = {}

    def await_agent(self, pause=0):
        """Waits until the agent has got into the owner's situation, and for a random part of the pause."""
        ready, _, _ = select.select([self._process.stdout], [], [], TIMEOUT)
        assert ready and self._process.stdout.readline() == "reached\n", "the agent does not get into the situation"
        time.sleep(random.uniform(0, pause))

    def order_claim(self):
        self._process.stdin.write("\n")
        self._process.stdin.flush()

    def claim_time(self):
        """Returns the monotonic nanoseconds just before the ordered claim."""
        word, nanoseconds = self._process.stdout.readline().split()
        assert word == "claimed", word
        return int(nanoseconds)

    def finish(self):
        """Lets it count what happened, and end."""
        if self._process.stdin.closed:
            return
        self._process.stdin.close()
        fields = self._process.stdout.read().split()[-14:]
        self.counts = {name: float(value) for name, value in zip(fields[::2], fields[1::2])}
        self._process.stdout.close()
        assert self._process.wait() == 0, "the owner failed"


@contextlib.contextmanager
def owner(*arguments):
    one = Owner(*arguments)
    try:
        yield one
    finally:
        one.finish()
