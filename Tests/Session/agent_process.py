"""One run of the agent, controlled over pipes."""

import collections
import contextlib
import json
import os
import queue
import signal
import subprocess
import tempfile
import threading

from places import PATIENCE

_SHELL_BETWEEN = 'exec 3<&0; "$0" "$@" --parent-pid $$ <&3 3<&- & wait'


def compact(message):
    """Returns a message in the agent's own notation, except for the order of its keys."""
    return json.dumps(message, separators=(",", ":"), ensure_ascii=False).replace("/", "\\/")


def shortened(text, length=600):
    return text if len(text) <= length else f"{text[:length]}... ({len(text)} characters)"


_running = set()
_running_lock = threading.Lock()
_over = threading.Event()


class AgentProcess:
    """A test must take every message of the agent in order: replies with `reply`, events with `event`. `reply` sets
    aside the events that come before it. Every deviation raises AssertionError. Only `kill` may be called from another
    thread."""

    def __init__(self, command, environment, below_shell=False):
        """Starts the agent as a child of this process, or of a shell that the agent gets as its parent."""
        if below_shell:
            command = ["/bin/sh", "-c", _SHELL_BETWEEN, *command]
        self._below_shell = below_shell
        self._errors = tempfile.TemporaryFile()
        self._lines = queue.Queue()
        self._events = collections.deque()  # events that came before a reply
        self._requests = 1000
        with _running_lock:
            assert not _over.is_set(), "the tests are over"
            self._process = subprocess.Popen(
                command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._errors, env=environment,
                start_new_session=below_shell)
            self._reader = threading.Thread(target=self._read, daemon=True)
            self._reader.start()
            _running.add(self)

    # ---- output

    def _read(self):
        for line in self._process.stdout:
            self._lines.put(line)
        self._lines.put(b"")  # marks the end of the output

    def _line(self, seconds=PATIENCE):
        """Returns the next line, b"" at the end of the output and ever after, or None at the time-out."""
        try:
            line = self._lines.get(timeout=seconds)
        except queue.Empty:
            return None
        if line == b"":
            self._lines.put(line)
        return line

    def _message(self, wanted, seconds=PATIENCE):
        """Returns the next message, or None at the time-out."""
        line = self._line(seconds)
        assert line != b"", f"the agent ended before {wanted} came; on standard error: {self.errors()}"
        return line and self._decoded(line)

    @staticmethod
    def _decoded(line):
        text = line.decode()
        assert text.endswith("\n"), "a line without its end: " + shortened(text)
        message = json.loads(text)
        assert isinstance(message, dict), "no object: " + shortened(text)
        assert compact(message) + "\n" == text, "no compact line: " + shortened(text)
        return message

    def event_within(self, seconds):
        """Returns the next event, or None at the time-out."""
        if self._events:
            return self._events.popleft()
        message = self._message("an event", seconds)
        assert message is None or "event" in message, "instead of an event: " + shortened(compact(message))
        return message

    def event(self):
        event = self.event_within(PATIENCE)
        assert event is not None, "an event does not come"
        return event

    def reply(self, number):
        while True:
            message = self._message(f"the reply to {number}")
            assert message is not None, f"the reply to {number} does not come"
            if "event" not in message:
                break
            self._events.append(message)
        assert message.keys() == {"request_id", "ok", "reason", "sequence"}, "no reply: " + compact(message)
        assert type(message["ok"]) is bool and type(message["sequence"]) is int, "no reply: " + compact(message)
        assert type(message["request_id"]) is int and message["request_id"] == number, (
            f"instead of the reply to {number}: {compact(message)}")
        assert message["ok"] == (message["reason"] == ""), "success with a reason, or none: " + compact(message)
        return message

    def set_aside(self):
        """Takes and returns the events that `reply` set aside."""
        events = list(self._events)
        self._events.clear()
        return events

    def said_within(self, seconds):
        """Returns output that was not taken or that comes in that time, as text; None if there is none."""
        if self._events:
            return shortened(compact(self._events[0]))
        line = self._line(seconds)
        if line == b"":
            return "(the end) " + self.errors()
        return line and shortened(line.decode(errors="replace"))

    def errors(self):
        # Reads with an explicit offset, which leaves the position where the agent writes unchanged.
        return os.pread(self._errors.fileno(), 1 << 16, 0).decode(errors="replace")

    # ---- commands

    def send(self, text):
        """Sends the text in one write."""
        data = text if isinstance(text, bytes) else text.encode()
        while data:  # a signal may interrupt the write
            data = data[os.write(self._process.stdin.fileno(), data):]

    def request(self, command, **fields):
        """Sends a command and returns its reply."""
        self._requests += 1
        self.send(json.dumps({"command": command, "request_id": self._requests, **fields}) + "\n")
        return self.reply(self._requests)

    def close_input(self):
        self._process.stdin.close()

    # ---- end

    def kill_shell(self):
        """Kills the shell, which is the agent's parent."""
        assert self._below_shell
        self._process.kill()
        self._process.wait()

    def expect_end(self):
        """The agent must end without further output, and with status 0 if it is our child."""
        line = self._line()
        assert line is not None, "the agent does not end"
        assert line == b"" and not self._events, "before the end: " + shortened(repr((line, self._events)))
        status = self._process.wait(PATIENCE)
        assert self._below_shell or status == 0, f"the exit status is {status}"
        assert self.errors() == "", "on standard error: " + self.errors()

    def kill(self):
        """Ends the agent and releases everything. May be called at any time and repeatedly."""
        with _running_lock:
            if self not in _running:
                return
            _running.remove(self)
        has_ended = self._lines.queue and self._lines.queue[-1] == b""
        if self._below_shell and not has_ended:
            with contextlib.suppress(ProcessLookupError, PermissionError):  # the group has just ended
                os.killpg(self._process.pid, signal.SIGKILL)  # the shell may have ended before the agent
        self._process.kill()
        self._process.wait()
        self._reader.join(PATIENCE)
        for file in (self._process.stdin, self._process.stdout, self._errors):
            file.close()


def kill_all():
    """Kills all agents. No other can start afterwards."""
    _over.set()
    with _running_lock:
        agents = list(_running)
    for agent in agents:
        agent.kill()
