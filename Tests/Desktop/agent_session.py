"""What the tests with real applications ask of the agent. They account for every line of its output."""

import base64
import json
import pathlib
import time

from agent_process import TIMEOUT, AgentProcess, shortened


class Failure(Exception):
    """An expectation was not met."""


def expect(condition, message):
    if not condition:
        raise Failure(message)


def is_soon(condition, seconds=5):
    """Polls the condition, for states that nothing announces. False after `seconds`."""
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() >= end:
            return False
        time.sleep(0.05)
    return True


def wait_until(condition, what):
    expect(is_soon(condition, TIMEOUT), f"this did not come: {what}")


class AgentSession:
    """One run of the agent. A request accounts for its reply, and `copied_by` or `made_file_by` for an event. Any other
    line makes the next step fail, at the latest."""

    def __init__(self, program):
        self.programs = program.parent  # the directory of all programs
        self._agent = AgentProcess([program])
        self.output = self._agent.output
        self.kill = self._agent.kill

    # ---- commands

    def request(self, command, **fields):
        """Sends a command that must succeed. Returns the reply."""
        reply = self._agent.request(command, **fields)
        expect(reply["ok"], f"{command} failed: {reply['reason']}")
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
        events = self._agent.set_aside()
        expect(not events, f"unexpected {during}: " + shortened(json.dumps(events)))

    def _events_until(self, is_last):
        """Takes the events up to the first for which `is_last` holds, and those that have come after it."""
        events = [self._agent.event()]
        while not is_last(events[-1]):
            events.append(self._agent.event())
        while (event := self._agent.event_within(0)) is not None:
            events.append(event)
        return events

    def copied_by(self, action):
        """Returns the event that describes what the action copied. Exactly one such event must follow its announcement.
        Announcements of other contents may come before."""
        self.expect_silence("before a copy")
        action()
        events = self._events_until(self._is_more_than_announcement)
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
        events = self._events_until(lambda event: True)
        expect(len(events) == 1 and events[0]["event"] == "file_renamed",
               "instead of one file: " + shortened(json.dumps(events)))
        return events[0]["sequence"]

    # ---- end

    def quit(self):
        self.expect_silence("in the end")
        self.request("quit")
        self._agent.expect_end()
