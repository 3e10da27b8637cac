"""One run of the agent, controlled over its pipes as its parent does. All tests and measurements in Python use it."""

import collections
import contextlib
import json
import os
import queue
import signal
import subprocess
import tempfile
import threading

from recorded_lines import RecordedLines

TIMEOUT = 60  # seconds; a busy machine needs far less

_LINES_SHOWN = 40  # the lines of output in a message about a failure
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
    """Take every message of the agent in order: replies with `reply`, events with `event`, any of them with `message`
    or `line`. `reply` sets aside the events that come before it. Every deviation and every time-out raises
    AssertionError, which shows the last output. Only `kill` may be called from another thread."""

    def __init__(self, command, environment=None, below_shell=False):
        """Starts the agent as a child of this process, or of a shell that the agent gets as its parent. Without an
        environment, it gets that of this process."""
        if below_shell:
            command = ["/bin/sh", "-c", _SHELL_BETWEEN, *command]
        self._below_shell = below_shell
        self._errors = tempfile.TemporaryFile()
        self._recorded_lines = RecordedLines()
        self._lines = queue.Queue()
        self._taken = collections.deque(maxlen=_LINES_SHOWN)  # the last lines that left the queue
        self._events = collections.deque()  # events that came before a reply
        self._requests = 1000
        self._may_read = threading.Event()
        self._may_read.set()
        with _running_lock:
            assert not _over.is_set(), "the tests are over"
            self._process = subprocess.Popen(
                command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._errors, env=environment,
                start_new_session=below_shell)
            self._reader = threading.Thread(target=self._read, daemon=True)
            self._reader.start()
            _running.add(self)

    @property
    def pid(self):
        return self._process.pid

    # ---- output

    def _read(self):
        # Reads all the time, because the agent waits while its pipe is full.
        for line in self._process.stdout:
            self._recorded_lines.received(line)
            self._lines.put(line)
            self._may_read.wait()
        self._lines.put(b"")  # marks the end of the output

    @contextlib.contextmanager
    def unread(self):
        """Nothing reads the agent's output inside, but for what was read already."""
        self._may_read.clear()
        try:
            yield
        finally:
            self._may_read.set()

    def _line_within(self, seconds):
        """Returns the next line, b"" at the end of the output and ever after, or None at the time-out."""
        try:
            line = self._lines.get(timeout=seconds)
        except queue.Empty:
            return None
        if line == b"":
            self._lines.put(line)
        else:
            self._taken.append(line)
        return line

    def _expect(self, condition, deviation):
        if not condition:
            raise AssertionError(f"{deviation}\nThe last output of the agent:\n{self.output()}")

    def output(self):
        """Returns the last lines of output, taken or not, and what the agent wrote to standard error."""
        with self._lines.mutex:
            lines = [*self._taken, *self._lines.queue]
        shown = [shortened(line.decode(errors="replace").rstrip("\n")) if line else "(the end)"
                 for line in lines[-_LINES_SHOWN:]]
        return "\n".join(shown + ([f"On standard error: {self.errors()}"] if self.errors() else []))

    def errors(self):
        # Reads with an explicit offset, which leaves the position where the agent writes unchanged.
        return os.pread(self._errors.fileno(), 1 << 16, 0).decode(errors="replace")

    def line(self, seconds=TIMEOUT, wanted="a line"):
        """Returns the next line as bytes, for measurements that decode it later."""
        line = self._line_within(seconds)
        self._expect(line is not None, f"{wanted} does not come within {seconds} s")
        self._expect(line != b"", f"the agent ended before {wanted} came")
        return line

    def message(self, wanted="a message"):
        return self._decoded(self.line(wanted=wanted))

    def _decoded(self, line):
        text = line.decode()
        self._expect(text.endswith("\n"), "a line without its end: " + shortened(text))
        message = json.loads(text)
        self._expect(isinstance(message, dict), "no object: " + shortened(text))
        self._expect(compact(message) + "\n" == text, "no compact line: " + shortened(text))
        return message

    def event_within(self, seconds):
        """Returns the next event, or None at the time-out."""
        if self._events:
            return self._events.popleft()
        line = self._line_within(seconds)
        if line is None:
            return None
        self._expect(line != b"", "the agent ended before an event came")
        message = self._decoded(line)
        self._expect("event" in message, "instead of an event: " + shortened(compact(message)))
        return message

    def event(self):
        event = self.event_within(TIMEOUT)
        self._expect(event is not None, f"an event does not come within {TIMEOUT} s")
        return event

    def reply(self, number):
        while True:
            message = self.message(f"the reply to {number}")
            if "event" not in message:
                break
            self._events.append(message)
        shown = compact(message)
        self._expect(message.keys() == {"request_id", "ok", "reason", "sequence"}, "no reply: " + shown)
        self._expect(type(message["ok"]) is bool and type(message["sequence"]) is int, "no reply: " + shown)
        self._expect(type(message["request_id"]) is int and message["request_id"] == number,
                     f"instead of the reply to {number}: {shown}")
        self._expect(message["ok"] == (message["reason"] == ""), "success with a reason, or none: " + shown)
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
        line = self._line_within(seconds)
        if line == b"":
            return "(the end) " + self.errors()
        return line and shortened(line.decode(errors="replace"))

    # ---- commands

    def send(self, text):
        """Sends the text in one write."""
        data = text if isinstance(text, bytes) else text.encode()
        self._recorded_lines.sent(data)
        while data:  # a signal may interrupt the write
            data = data[os.write(self._process.stdin.fileno(), data):]

    def request(self, command, **fields):
        """Sends a command and returns its reply."""
        self._requests += 1
        self.send(json.dumps({"command": command, "request_id": self._requests, **fields}) + "\n")
        return self.reply(self._requests)

    def close_input(self):
        self._recorded_lines.end_input()
        self._process.stdin.close()

    # ---- end

    def kill_shell(self):
        """Kills the shell, which is the agent's parent."""
        assert self._below_shell
        self._process.kill()
        self._process.wait()

    def expect_end(self):
        """The agent must end without further output, and with status 0 if it is our child."""
        line = self._line_within(TIMEOUT)
        self._expect(line is not None, "the agent does not end")
        self._expect(line == b"" and not self._events, "before the end: " + shortened(repr((line, self._events))))
        self._expect_status()

    def end(self):
        """Closes the input. The agent must end with status 0; what it still says does not matter."""
        self.close_input()
        self._reader.join(TIMEOUT)
        self._expect(not self._reader.is_alive(), "the agent does not end")
        self._expect_status()

    def _expect_status(self):
        status = self._process.wait(TIMEOUT)
        self._expect(self._below_shell or status == 0, f"the exit status is {status}")
        self._expect(self.errors() == "", "the agent wrote to standard error")

    def kill(self):
        """Ends the agent and releases everything. May be called at any time and repeatedly."""
        with _running_lock:
            if self not in _running:
                return
            _running.remove(self)
        self._may_read.set()
        has_ended = self._lines.queue and self._lines.queue[-1] == b""
        if self._below_shell and not has_ended:
            with contextlib.suppress(ProcessLookupError, PermissionError):  # the group has just ended
                os.killpg(self._process.pid, signal.SIGKILL)  # the shell may have ended before the agent
        self._process.kill()
        self._process.wait()
        self._reader.join(TIMEOUT)
        for file in (self._process.stdin, self._process.stdout, self._errors):
            file.close()
        self._recorded_lines.close()


def kill_all():
    """Kills all agents. No other can start afterwards."""
    _over.set()
    with _running_lock:
        agents = list(_running)
    for agent in agents:
        agent.kill()
