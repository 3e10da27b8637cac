"""A parent of the agent, for tests. It starts the agent, sends commands, and accounts for every line of output."""

import base64
import json
import pathlib
import subprocess
import threading
import time

TIME_OUT = 60  # seconds; a busy machine needs far less


class Failure(Exception):
    """An expectation was not met."""


def expect(condition, message):
    if not condition:
        raise Failure(message)


def shortened(text, length=400):
    return text if len(text) <= length else f"{text[:length]}... ({len(text)} characters)"


def is_soon(condition, seconds=5):
    """Polls the condition, for states that nothing announces. False after `seconds`."""
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() >= end:
            return False
        time.sleep(0.05)
    return True


def wait_until(condition, what):
    expect(is_soon(condition, TIME_OUT), f"this did not come: {what}")


class AgentSession:
    """One run of the agent. A request accounts for its reply, and `copied_by` or `made_file_by` for an event. Any other
    line makes the next step fail, at the latest."""

    def __init__(self, program):
        self.programs = program.parent  # the directory of all programs
        self._process = subprocess.Popen(
            [program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self._lines = []  # all output, in order
        self._events = []  # events not yet accounted for
        self._replies = {}
        self._changed = threading.Condition()
        self._requests = 0
        self._errors = b""
        self._threads = [threading.Thread(target=self._read, daemon=True),
                         threading.Thread(target=self._read_errors, daemon=True)]
        for thread in self._threads:
            thread.start()

    # ---- output

    def _read(self):
        for line in self._process.stdout:
            with self._changed:
                self._lines.append(line.decode(errors="replace").rstrip("\n"))
                message = json.loads(line)
                if "event" in message:
                    self._events.append(message)
                else:
                    self._replies[message["request_id"]] = message
                self._changed.notify_all()

    def _read_errors(self):
        self._errors = self._process.stderr.read()

    def output(self):
        with self._changed:
            lines = [shortened(line) for line in self._lines]
        errors = self._errors.decode(errors="replace")
        return "\n".join(lines + ([f"On standard error: {errors}"] if errors else []))

    def _wait(self, condition, message):
        end = time.monotonic() + TIME_OUT
        with self._changed:
            while not condition():
                left = end - time.monotonic()
                expect(left > 0 and self._process.poll() is None, message)
                self._changed.wait(min(left, 1))

    # ---- commands

    def request(self, command, **fields):
        """Sends a command that must succeed. Returns the reply."""
        self._requests += 1
        number = self._requests
        line = json.dumps({"command": command, "request_id": number, **fields}) + "\n"
        self._process.stdin.write(line.encode())
        self._process.stdin.flush()
        self._wait(lambda: number in self._replies, f"no reply to {command}")
        reply = self._replies[number]
        expect(reply["ok"] and reply["reason"] == "", f"{command} failed: {reply['reason']}")
        return reply

    def prompt_for_names(self, wanted):
        self.request("configure_file_prompt", rename_prompt=wanted)

    def write_text(self, text):
        self.request("write_text", text_b64=base64.b64encode(text.encode()).decode(), marker="the test")

    def write_image_data(self, picture):
        self.request("write_image_data", image_b64=base64.b64encode(picture).decode())

    def write_files(self, kind, *paths):
        self.request("write_files", kind=kind, paths=[str(path) for path in paths], marker="the test")

    # ---- events

    def expect_silence(self, during):
        """Fails if the agent has sent an event that is not accounted for."""
        self.request("ping")
        with self._changed:
            expect(not self._events, f"unexpected {during}: " + shortened(json.dumps(self._events)))

    def copied_by(self, action):
        """Returns the event that describes what the action copied. Exactly one such event must follow its announcement.
        Announcements of other contents may come before."""
        self.expect_silence("before a copy")
        action()
        self._wait(lambda: any(self._is_more_than_announcement(event) for event in self._events),
                   "the agent describes nothing")
        with self._changed:
            events, self._events = self._events, []
        *announcements, description = events
        wrong = [event for event in announcements if self._is_more_than_announcement(event)]
        expect(not wrong, "more than was copied is reported: " + shortened(json.dumps(events)))
        expect(description["event"] == "change", "instead of a change: " + shortened(json.dumps(description)))
        expect(announcements and announcements[-1]["sequence"] == description["sequence"],
               "not announced before: " + shortened(json.dumps(events)))
        expect(description["marker"] == "", "it has a marker: " + shortened(json.dumps(description)))
        return description

    @staticmethod
    def _is_more_than_announcement(event):
        return event["event"] != "change" or event.get("kind") != "unsupported"

    def text_copied_by(self, action):
        event = self.copied_by(action)
        expect("kind" not in event, "no text: " + shortened(json.dumps(event)))
        encoded = event["text_b64"]
        text = base64.b64decode(encoded + "=" * (-len(encoded) % 4))
        expect(len(text) == event["bytes"], "bytes is wrong: " + shortened(json.dumps(event)))
        return text.decode()

    def files_copied_by(self, action):
        return self._paths(self.copied_by(action), "files")

    def exports_copied_by(self, action, kind="formats"):
        """Returns the contents of the exported files, by file name."""
        paths = self._paths(self.copied_by(action), kind)
        return {pathlib.Path(path).name: pathlib.Path(path).read_bytes() for path in paths}

    @staticmethod
    def _paths(event, kind):
        expect(event.get("kind") == kind, f"not {kind}: " + shortened(json.dumps(event)))
        return event["paths"]

    def made_file_by(self, action):
        """Returns the sequence of the event that reports a generated file. No other event may come with it."""
        self.expect_silence("before a file is made")
        action()
        self._wait(lambda: self._events, "the agent tells of no file")
        with self._changed:
            events, self._events = self._events, []
        expect(len(events) == 1 and events[0]["event"] == "file_renamed",
               "instead of one file: " + shortened(json.dumps(events)))
        return events[0]["sequence"]

    # ---- end

    def quit(self):
        self.expect_silence("in the end")
        self.request("quit")
        try:
            status = self._process.wait(TIME_OUT)
        except subprocess.TimeoutExpired:
            raise Failure("the agent does not end") from None
        for thread in self._threads:
            thread.join(TIME_OUT)
        expect(status == 0, f"the agent's exit status is {status}")
        expect(self._errors == b"", "the agent wrote to standard error")

    def kill(self):
        self._process.kill()
        self._process.wait()
