#!/usr/bin/env python3
"""Compares the lines that tests have recorded with the schema: check_lines.py SCHEMA DIRECTORY AGENT

The agent's lines must match it. A command that matches it must be answered, and not with a reason that blames its form.
A command that succeeded must match it, or be one of the other forms that docs/protocol.md accepts.

First a short session of the agent is recorded, too. Its lines must be among those in the directory.
"""

import collections
import json
import os
import pathlib
import sys

sys.dont_write_bytecode = True  # keeps the source directory clean
sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "Support"))

from agent_process import AgentProcess  # noqa: E402
from protocol_schema import (  # noqa: E402
    ProtocolSchema, decoded, error_beyond_schema, may_be_refused, shape, unsigned)
from recorded_lines import DIRECTORY_VARIABLE  # noqa: E402
from scratch_places import environment_in, scratch_directory  # noqa: E402

if hasattr(sys, "set_int_max_str_digits"):
    sys.set_int_max_str_digits(0)  # the agent accepts numbers of any size

_LONG_TEXT = "Qm9u" * 50000
_SHOWN = 40  # failures


def record_session(agent_program):
    with scratch_directory() as directory:
        agent = AgentProcess([agent_program], environment_in(directory))
        try:
            assert agent.request("ping")["ok"]
            agent.send(b"no JSON\n")
            assert agent.request("write_text", text_b64=_LONG_TEXT, marker="m")["ok"]
            assert not agent.request("write_text", text_b64=_LONG_TEXT)["ok"]
            agent.end()
        finally:
            agent.kill()


def strict_form(value):
    """Returns the command that parents should send for one that the agent accepts, as docs/protocol.md says: with whole
    numbers modulo 2**64, a boolean for 0 and 1, and without fields that the agent ignores."""
    fields = {
        "write_text": ("text_b64", "marker"),
        "write_image_data": ("image_b64",),
        "write_files": ("kind", "paths", "marker"),
    }.get(value["command"], ())
    command = {name: value[name] for name in ("command", *fields) if name in value}
    command["request_id"] = unsigned(value["request_id"])
    expected = value.get("expected_sequence")
    if value["command"] == "write_files" and is_number(expected):
        command["expected_sequence"] = unsigned(expected)
    if value["command"] == "configure_file_prompt":
        wanted = value.get("rename_prompt")
        command["rename_prompt"] = is_number(wanted) and wanted == 1
    return command


def is_number(value):
    return value is not None and not isinstance(value, (str, list, dict))


class Sent:
    """A line to the agent."""

    def __init__(self, line, value, is_strict):
        self.line = line
        self.value = value
        self.is_strict = is_strict

    @property
    def number(self):
        return unsigned(self.value["request_id"]) if self.is_command else None

    @property
    def is_command(self):
        return (isinstance(self.value, dict) and isinstance(self.value.get("command"), str)
                and is_number(self.value.get("request_id")))


class Check:
    def __init__(self, schema):
        self.schema = schema
        self.failures = 0
        self.counts = collections.Counter()
        self._sent = {}  # whether lines of a shape match the schema
        self._received = {}  # what is wrong with lines of a shape, or None

    def fail(self, what, line):
        self.failures += 1
        if self.failures <= _SHOWN:
            print(f"{self.place}: {what}:\n    {line[:400].decode(errors='replace')}")

    def check_file(self, path):
        unanswered = collections.deque()
        has_sent = False  # an agent may also be given a file as its input
        with path.open("rb") as file:
            self.place = file.readline().decode().strip("# \n")
            for line in file:
                direction, text = line[:2], line[2:].rstrip(b"\n")
                if direction == b"> ":
                    unanswered.append(self.sent(text))
                    has_sent = True
                else:
                    assert direction == b"< ", line
                    message = self.received(text)
                    if "ok" in message and has_sent:
                        self.replied(message, unanswered)

    def sent(self, line):
        self.counts["sent"] += 1
        text = line.rstrip(b"\r").removeprefix(b"\xef\xbb\xbf")
        try:
            value = decoded(text)
        except ValueError:
            self.counts["no JSON"] += 1
            return Sent(line, None, False)
        key = shape(text)
        if key not in self._sent:
            self._sent[key] = self.schema.matches("command", value)
        self.counts["strict"] += self._sent[key]
        return Sent(line, value, self._sent[key])

    def received(self, line):
        self.counts["received"] += 1
        try:
            message = decoded(line)
        except ValueError as error:
            self.fail(f"not JSON, {error}", line)
            return {}
        key = shape(line)
        if key not in self._received:
            name = "event" if "event" in message else "reply"
            self._received[key] = self.schema.error(name, message) or error_beyond_schema(message)
        if self._received[key]:
            self.fail(self._received[key], line)
            return {}
        return message

    def replied(self, reply, unanswered):
        while unanswered and unanswered[0].number != reply["request_id"]:
            sent = unanswered.popleft()
            if sent.is_strict:
                self.fail("matches the schema, but was not answered", sent.line)
        if not unanswered:
            self.fail("answers nothing", json.dumps(reply).encode())
            return
        sent = unanswered.popleft()
        if sent.is_strict:
            if not reply["ok"] and not may_be_refused(sent.value, reply["reason"]):
                self.fail(f"matches the schema, but was refused: {reply['reason']}", sent.line)
        elif reply["ok"]:
            self.counts["accepted in another form"] += 1
            error = self.schema.error("command", strict_form(sent.value))
            if error:
                self.fail(f"succeeded in an unknown form ({error})", sent.line)

    def print_counts(self):
        counts = self.counts
        print(f"{counts['received']} lines of the agent in {len(self._received)} shapes; "
              f"{counts['sent']} lines to it in {len(self._sent)} shapes, of which {counts['strict']} lines match the "
              f"schema, {counts['accepted in another form']} were accepted in another form and {counts['no JSON']} are "
              f"no JSON; {self.failures} failures")


def main():
    schema, directory = ProtocolSchema(sys.argv[1]), pathlib.Path(sys.argv[2])
    os.environ[DIRECTORY_VARIABLE] = str(directory)
    before = set(directory.glob("*.lines"))
    record_session(sys.argv[3])
    own = Check(schema)
    for path in set(directory.glob("*.lines")) - before:
        own.check_file(path)
    if own.counts != {"sent": 4, "received": 3, "strict": 2, "no JSON": 1}:
        sys.exit(f"The recorded session is not the one that took place: {dict(own.counts)}")
    check = Check(schema)
    for path in sorted(directory.glob("*.lines")):
        check.check_file(path)
    check.print_counts()
    sys.exit(1 if check.failures else 0)


main()
