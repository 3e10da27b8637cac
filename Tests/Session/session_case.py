"""The base of all tests: an agent on a pasteboard of its own, and another application on that pasteboard."""

import base64
import os
import pathlib
import shutil
import subprocess
import tempfile
import threading
import unittest

from agent_process import TIMEOUT, AgentProcess, compact, shortened

MARKER_TYPE = "com.corvelle.tavelbridge.clipboard-origin-v1"
TWO_LOOKS = 0.22  # seconds; the agent polls twice in that time
MISSED = 20  # seconds; a content announced so long ago will not be described any more

# Limits how many copies a run may repeat because of the race in `described`.
second_copies = threading.Semaphore(3)


def base64_of(data):
    return base64.b64encode(data if isinstance(data, bytes) else data.encode()).decode()


def text_event(text):
    data = text if isinstance(text, bytes) else text.encode()
    return {"event": "change", "text_b64": base64_of(data).rstrip("="), "bytes": len(data)}


class SessionCase(unittest.TestCase):
    # session-test sets these before the tests run.
    agent_program = tool_program = place = None

    # A test finds its agent's directory by comparing before and after, so only one agent starts at a time.
    launching = threading.Lock()

    def setUp(self):
        pasteboard = self.place.pasteboard()
        self.pasteboard, self.environment = pasteboard.__enter__()
        self.addCleanup(pasteboard.__exit__, None, None, None)
        self.addCleanup(self.clear)
        self.directory = pathlib.Path(tempfile.mkdtemp(dir=self.place.directory))
        self.agent = None

    def named(self, option):
        """Returns the arguments with which a program uses this test's pasteboard."""
        return [] if self.pasteboard is None else [option, self.pasteboard]

    # ---- the other application

    def run_tool(self, *arguments, content=b""):
        return subprocess.run(
            [self.tool_program, *self.named("--pasteboard"), *map(str, arguments)], input=content,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=TIMEOUT, env=self.environment)

    def tool(self, *arguments, content=b""):
        """Runs the other application and returns its output."""
        result = self.run_tool(*arguments, content=content)
        self.assertEqual(result.returncode, 0, (arguments, result.stderr))
        return result.stdout

    def clear(self):
        """Removes the content from the server and ends the background process that owns it."""
        self.run_tool("clear")

    def copy(self, *arguments, content=b""):
        self.copied = arguments, content
        self.tool(*arguments, content=content)

    def copy_text(self, text):
        self.copy("copy", content=text if isinstance(text, bytes) else text.encode())

    def expect_on_pasteboard(self, content, kind="text"):
        found = self.tool("paste", "--type", kind)
        self.assertTrue(found == content, f"{kind}: {shortened(repr(found))}")

    def expect_marker(self, marker):
        self.expect_on_pasteboard(marker.encode(), MARKER_TYPE)

    def expect_no_marker(self):
        self.assertEqual(self.run_tool("paste", "--type", MARKER_TYPE).returncode, 1)

    def file(self, name, content=b"content"):
        path = self.directory / name
        path.write_bytes(content)
        return path

    # ---- the agent

    def launch(self, *arguments, below_shell=False):
        command = [self.agent_program, *self.named("--test-pasteboard"), *arguments]
        self.agent = AgentProcess(command, self.environment, below_shell)
        self.addCleanup(self.agent.kill)

    def start(self, below_shell=False):
        """Starts the agent. From now on `sequence` is the last sequence that the agent reported."""
        with self.launching:
            before = self.place.export_directories()
            self.launch(*([] if below_shell else ["--parent-pid", str(os.getpid())]), below_shell=below_shell)
            self.sequence = self.request("ping")["sequence"]
            new = self.place.export_directories() - before
        if not below_shell:
            self.place.check(self.agent.pid)
        self.assertEqual(len(new), 1, "the agent's directory, and no other, has to have come")
        self.export_directory = new.pop()
        self.addCleanup(self.remove_exports)

    def remove_exports(self):
        """Cleans up after a failed test; an agent that ends normally removes its own directory."""
        self.agent.kill()
        shutil.rmtree(self.export_directory, ignore_errors=True)

    def request(self, command, **fields):
        """Sends a command that must succeed and returns its reply."""
        reply = self.agent.request(command, **fields)
        self.assertTrue(reply["ok"], f"{command}: {reply['reason']}")
        return reply

    def write(self, command, **fields):
        """Sends a writing command and stores its sequence, which must be a later one."""
        sequence = self.request(command, **fields)["sequence"]
        self.assertGreater(sequence, self.sequence)
        self.sequence = sequence

    def expect_refused(self, reason, command, **fields):
        reply = self.agent.request(command, **fields)
        wanted = (False, reason, self.sequence)
        self.assertEqual((reply["ok"], reply["reason"], reply["sequence"]), wanted, shortened(str(fields)))

    def expect_silence(self):
        """The agent must send nothing for two polls, and the sequence must not move."""
        self.assertIsNone(self.agent.said_within(TWO_LOOKS))
        self.assertEqual(self.request("ping")["sequence"], self.sequence)
        self.assertIsNone(self.agent.said_within(0))

    def expect_same(self, message, expected):
        actual, wanted = (compact(dict(sorted(one.items()))) for one in (message, expected))
        self.assertTrue(actual == wanted, f"{shortened(actual)} instead of {shortened(wanted)}")

    def described(self, marker=""):
        """Returns the event after the announcement of a copy, without its sequence and marker."""
        announcement = self.agent.event()
        following = self.agent.event_within(TIMEOUT if self.place.counted_once else MISSED)
        if not self.place.counted_once and (following is None or following.get("kind") == "unsupported"):
            # The agent polled after the clearing and before the content.
            self.expect_announcement(announcement, announcement.get("marker") and marker)
            announcement = following or self.copied_again()
            following = self.agent.event_within(TIMEOUT)
        self.expect_announcement(announcement, marker)
        self.assertIsNotNone(following, "what was copied is announced, but not described")
        if following["event"] == "change":
            self.assertIs(type(following.get("sequence")), int)
            self.assertEqual((following.pop("sequence"), following.pop("marker", None)), (self.sequence, marker))
        return following

    def copied_again(self):
        """Copies the same again and returns the announcement. The agent misses a content that follows the clearing
        without moving the change count."""
        self.assertTrue(second_copies.acquire(blocking=False), "one more copy that is announced, but not described")
        print(f"note   {self.id()}: the agent saw only the clearing before a copy; copied again", flush=True)
        self.tool(*self.copied[0], content=self.copied[1])
        return self.agent.event()

    def expect_announcement(self, event, marker):
        """Stores the sequence, which must be a new one."""
        self.assertIs(type(event.get("sequence")), int, shortened(compact(event)))
        self.assertGreater(event["sequence"], self.sequence)
        self.sequence = event["sequence"]
        self.expect_same(
            event, {"event": "change", "kind": "unsupported", "marker": marker, "sequence": self.sequence})

    def expect_described(self, expected, marker=""):
        """The agent must announce the new content, describe it as expected, and then send nothing."""
        self.expect_same(self.described(marker), expected)
        self.expect_silence()

    def exported(self, kind, marker=""):
        """Returns the exported files of the new content, in the event's order."""
        event = self.described(marker)
        paths = event.pop("paths", [])
        self.expect_same(event, {"event": "change", "kind": kind})
        self.expect_silence()
        for path in paths:
            status = pathlib.Path(path).lstat()
            self.assertEqual(oct(status.st_mode), oct(0o100600), path)
        return [pathlib.Path(path) for path in paths]

    def discard(self):
        """Discards the new content. Returns the event that described it, as a list: a poll may have come before the
        command."""
        sequence = self.request("discard_pending")["sequence"]
        self.assertGreater(sequence, self.sequence)
        events = self.agent.set_aside()
        announcements = [event for event in events if event.get("kind") == "unsupported"]
        descriptions = events[len(announcements):]
        self.assertEqual(events, announcements + descriptions)
        self.assertLessEqual(len(announcements), 1 if self.place.counted_once else 2)
        self.assertLessEqual(len(descriptions), 1 if announcements else 0)
        for event in announcements:
            self.expect_announcement(event, "")
        for event in descriptions:
            self.assertEqual((event.pop("sequence"), event.pop("marker")), (self.sequence, ""))
        self.sequence = sequence
        return descriptions

    def expect_private_directory(self, directory):
        self.assertEqual(oct(directory.lstat().st_mode), oct(0o040700), directory)

    def expect_gone(self):
        """The agent must have ended normally and removed its directory."""
        self.agent.expect_end()
        self.assertFalse(self.export_directory.exists(), "the agent's directory is still there")

    def quit(self):
        self.assertEqual(self.request("quit")["sequence"], self.sequence)
        self.expect_gone()
