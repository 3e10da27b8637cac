"""What the Python client does when the agent is missing, hangs, dies, or is another program."""

import asyncio
import contextlib
import logging
import os
import pathlib
import signal
import sys
import tempfile
import threading
import time
import unittest
from unittest import mock

import tavel_clipboard
from tavel_clipboard import (AgentEnded, AgentNotFound, AgentTimeout, AsyncClipboardAgent, ClipboardAgent, LogMessage,
                             ProtocolError, UnknownEvent)

AGENT = os.environ["TAVEL_TEST_AGENT"]
TIMEOUT = 60  # seconds; a busy machine needs far less
SHORT = 0.2  # seconds, for time-outs that the tests let pass

BEGIN = f"""#!{sys.executable}
import json, os, signal, sys
def say(**fields):
    print(json.dumps(fields), flush=True)
def answer(line):
    say(request_id=json.loads(line)["request_id"], ok=True, reason="", sequence=1)
"""
ANSWER_ALL = "for line in sys.stdin: answer(line)\n"
LOG = 'say(event="log", level="warning", message=str(number))\n'


class FailureCase(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.program = pathlib.Path(directory.name) / "agent"
        self.threads = threading.active_count()

    def fake(self, text, **options):
        """Returns a running client of a program with this text."""
        self.program.write_text(BEGIN + text)
        self.program.chmod(0o755)
        return self.started(ClipboardAgent(self.program, **options))

    def started(self, agent):
        agent.start()
        self.addCleanup(agent.end, SHORT)
        return agent

    @staticmethod
    def impatient(agent):
        """The agent has little time for its replies inside."""
        return mock.patch.object(agent, "_timeout", SHORT)

    def expect_nothing_left(self, agent):
        """The process has to be reaped, and the client's threads to be over."""
        with self.assertRaises(ChildProcessError):
            os.waitpid(agent.pid, os.WNOHANG)
        end = time.monotonic() + TIMEOUT
        while threading.active_count() > self.threads and time.monotonic() < end:
            time.sleep(0.01)
        self.assertEqual(threading.active_count(), self.threads)


class StartTests(FailureCase):
    def test_a_missing_program(self):
        agent = ClipboardAgent(self.program)
        with self.assertRaises(AgentNotFound):
            agent.start()
        with self.assertRaises(AgentEnded):
            agent.ping()
        self.program.write_text("no program")
        with self.assertRaises(AgentNotFound):
            agent.start()
        self.assertFalse(agent.running)
        agent.end()

    def test_the_program_is_found_in_the_environment(self):
        with mock.patch.dict(os.environ, TAVEL_CLIPBOARD_AGENT=AGENT), ClipboardAgent() as agent:
            agent.ping()

    def test_the_program_is_found_by_pkg_config(self):
        folder = self.program.parent
        (folder / "tavel-clipboard-agent.pc").write_text(
            f"agent={AGENT}\nName: agent\nDescription: agent\nVersion: 1\n")
        with mock.patch.dict(os.environ, PKG_CONFIG_PATH=str(folder)):
            self.assertEqual(tavel_clipboard.find_agent(), AGENT)
        with mock.patch.dict(os.environ, PATH=str(folder)), self.assertRaises(AgentNotFound):
            tavel_clipboard.find_agent()


class EndTests(FailureCase):
    def test_a_crash_fails_pending_and_later_commands(self):
        ends = []
        agent = self.started(ClipboardAgent(AGENT, on_end=ends.append))
        agent.ping()
        os.kill(agent.pid, signal.SIGSTOP)
        failures = []

        def ask():
            with self.assertRaises(AgentEnded) as ended:
                agent.ping()
            failures.append(ended.exception.exit_status)

        threads = [threading.Thread(target=ask) for _ in range(3)]
        for thread in threads:
            thread.start()
        os.kill(agent.pid, signal.SIGKILL)
        for thread in threads:
            thread.join(TIMEOUT)
        ask()
        self.assertEqual(failures, [-signal.SIGKILL] * 4)
        self.expect_nothing_left(agent)
        self.assertEqual([end.exit_status for end in ends], [-signal.SIGKILL])
        agent.restart()
        self.assertEqual(agent.ping(), 0)
        agent.end()
        self.assertEqual(agent.ended.exit_status, 0)
        self.assertEqual(len(ends), 1, "an end that the parent wanted was told")

    def test_a_stopped_agent_costs_no_more_than_the_time_out(self):
        agent = self.started(ClipboardAgent(AGENT))
        agent.ping()
        os.kill(agent.pid, signal.SIGSTOP)
        with self.impatient(agent), self.assertRaises(AgentTimeout):
            agent.ping()
        with self.impatient(agent), self.assertRaises(AgentTimeout):  # more than the pipe takes
            agent.write_image_data(bytes(8 << 20))
        agent.end(SHORT)
        self.assertEqual(agent.ended.exit_status, -signal.SIGKILL)
        self.expect_nothing_left(agent)

    def test_a_late_reply_is_nobody_elses(self):
        agent = self.fake("sys.stdin.readline(); sys.stdin.readline()\n"
                          "for number in (1, 2): say(request_id=number, ok=True, reason='', sequence=number)\n")
        with self.impatient(agent), self.assertRaises(AgentTimeout):
            agent.ping()
        self.assertEqual(agent.ping(), 2)

    def test_an_agent_that_floods_and_does_not_read(self):
        agent = self.fake(f"number = 0\nwhile True:\n number += 1\n {LOG}", timeout=SHORT)
        with self.assertRaises(AgentTimeout):
            agent.write_image_data(bytes(8 << 20))
        agent.end(SHORT)
        self.assertEqual(len(list(agent)), tavel_clipboard.EVENTS_HELD)
        self.expect_nothing_left(agent)

    def test_a_process_that_the_agent_leaves_behind_holds_up_nothing(self):
        agent = self.fake("line = sys.stdin.readline()\n"
                          "if (child := os.fork()) == 0: signal.pause()\n"
                          'say(request_id=1, ok=True, reason="", sequence=child)\n')
        child = agent.ping()
        try:
            agent.end(SHORT)
            self.assertEqual(agent.ended.exit_status, 0)
        finally:
            os.kill(child, signal.SIGKILL)
        self.expect_nothing_left(agent)

    def test_an_agent_that_only_closes_its_output_is_ended(self):
        with mock.patch.object(tavel_clipboard, "_GRACE", SHORT):
            agent = self.fake("os.close(1); signal.pause()")
            with self.assertRaises(AgentEnded):
                agent.ping()
        self.expect_nothing_left(agent)


class OutputTests(FailureCase):
    def test_what_is_no_line_of_an_agent_ends_it(self):
        event = '"event":"change","marker":"","sequence":1'
        for line in ("text", "", "[]", "7", "{", '{"request_id":1}', '{"request_id":1,"ok":1,"reason":"","sequence":1}',
                     '{"request_id":"1","ok":true,"reason":"","sequence":1}', f"{{{event}}}", "[" * 100000,
                     f'{{{event},"text_b64":"?"}}', f'{{{event},"text_b64":"/w"}}', f'{{{event},"kind":7}}',
                     f'{{{event},"kind":"files","paths":[7]}}', f'{{{event},"kind":"image","paths":[]}}',
                     '{"event":"log","level":"warning"}', '{"event":"file_renamed"}'):
            with self.subTest(line):
                agent = self.fake(f"sys.stdin.readline(); print({line!r}, flush=True)\nsignal.pause()")
                with self.assertRaises(ProtocolError):
                    agent.ping()
                self.expect_nothing_left(agent)

    def test_too_long_a_line_ends_the_agent(self):
        with mock.patch.object(tavel_clipboard, "LONGEST_LINE", 1 << 20):
            agent = self.fake('sys.stdin.readline(); print("x" * (1 << 20), flush=True)\nsignal.pause()')
            with self.assertRaisesRegex(ProtocolError, "too long"):
                agent.ping()

    def test_half_a_line_at_the_end_is_no_other_failure(self):
        agent = self.fake('sys.stdin.readline(); print("{", end="", flush=True)')
        with self.assertRaises(AgentEnded) as ended:
            agent.ping()
        self.assertNotIsInstance(ended.exception, ProtocolError)

    def test_unknown_events_and_keys_are_no_failure(self):
        agent = self.fake('say(event="news", value=1); say(event="change", kind="news", marker="", sequence=1)\n'
                          'say(event="log", level="warning", message="m", more=1)\n' + ANSWER_ALL)
        agent.ping()
        agent.end()
        news, change, log = agent
        self.assertEqual(news, UnknownEvent({"event": "news", "value": 1}))
        self.assertIsInstance(change, UnknownEvent)
        self.assertEqual(log, LogMessage("warning", "m"))


class ParentTests(FailureCase):
    def test_text_without_utf_8_is_refused_at_once(self):
        agent = self.started(ClipboardAgent(AGENT))
        for write in (lambda: agent.write_text("\ud800"), lambda: agent.write_text("", marker="\ud800"),
                      lambda: agent.write_files(["/\udcff"])):
            with self.assertRaises(ValueError):
                write()

    def test_a_parents_function_may_use_commands_and_may_fail(self):
        done, seen = threading.Event(), []

        def on_event(event):
            seen.append((event.message, agent.ping()))
            if event.message == "0":
                raise RuntimeError("the parent's mistake")
            agent.end()
            done.set()

        with self.assertLogs("tavel_clipboard", logging.ERROR):
            agent = self.fake(f"for number in range(2): {LOG}{ANSWER_ALL}", on_event=on_event)
            self.assertTrue(done.wait(TIMEOUT))
        self.assertEqual(seen, [("0", 1), ("1", 1)])
        self.expect_nothing_left(agent)

    def test_a_cancelled_coroutine_leaves_the_client_usable(self):
        async def session():
            async with AsyncClipboardAgent(AGENT) as agent:
                await agent.ping()
                os.kill(agent.pid, signal.SIGSTOP)
                waiting = [asyncio.create_task(coroutine) for coroutine in (agent.ping(), agent.next_event())]
                await asyncio.sleep(0)
                for task in waiting:
                    task.cancel()
                    with contextlib.suppress(asyncio.CancelledError):
                        await task
                with self.impatient(agent), self.assertRaises(AgentTimeout):
                    await agent.ping()
                waiting = asyncio.create_task(agent.next_event())
                os.kill(agent.pid, signal.SIGKILL)
                self.assertIsNone(await asyncio.wait_for(waiting, TIMEOUT))
                with self.assertRaises(AgentEnded):
                    await agent.ping()

        asyncio.run(session())


unittest.main(verbosity=2)
