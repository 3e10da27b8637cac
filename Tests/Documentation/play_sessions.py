#!/usr/bin/env python3
"""Plays the sessions of a Markdown page against the real agent: play_sessions.py BIN_DIRECTORY PAGE

A session is a fenced block marked "session". Each session gets its own agent and pasteboard. Its lines:

    → text     sent to the agent
    ← text     the agent's next line must be the same JSON
    $ command  run by the shell, with the project's programs in its path

A line to send may contain $TMPDIR. A string to receive may begin with "…", which stands for any path below $TMPDIR.
"""

import json
import os
import pathlib
import re
import subprocess
import sys
import time

sys.dont_write_bytecode = True  # keeps the source directory clean
sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "Support"))

from agent_process import TIMEOUT, AgentProcess, compact  # noqa: E402
from scratch_places import environment_in, scratch_directory  # noqa: E402


def matches(actual, expected, directory):
    if isinstance(expected, dict) and isinstance(actual, dict):
        return expected.keys() == actual.keys() and all(
            matches(actual[key], expected[key], directory) for key in expected
        )
    if isinstance(expected, list) and isinstance(actual, list):
        return len(expected) == len(actual) and all(
            matches(*pair, directory) for pair in zip(actual, expected)
        )
    if isinstance(expected, str) and expected.startswith("…"):
        return isinstance(actual, str) and actual.startswith(directory + "/") and actual.endswith(expected[1:])
    return type(actual) is type(expected) and actual == expected


class Session:
    def __init__(self, programs, directory):
        self.directory = str(directory)
        self.environment = environment_in(directory, PATH=f"{programs}:{os.environ['PATH']}")
        self.agent = AgentProcess([programs / "TavelClipboardAgent"], self.environment)

    def start(self):
        # The agent creates the directory after it has read the initial change count.
        deadline = time.monotonic() + TIMEOUT
        while not list(pathlib.Path(self.directory).glob("tavel-clipboard-*")):
            assert time.monotonic() < deadline, "the agent does not start"
            time.sleep(0.005)

    def play(self, line):
        if line.startswith("→ "):
            self.agent.send(line[2:].replace("$TMPDIR", self.directory) + "\n")
        elif line.startswith("← "):
            actual, expected = self.agent.message(), json.loads(line[2:])
            assert matches(actual, expected, self.directory), f"got {compact(actual)}"
        elif line.startswith("$ "):
            subprocess.run(line[2:], shell=True, check=True, env=self.environment)
        else:
            raise AssertionError("this is no line of a session")

    def end(self):
        self.agent.close_input()
        self.agent.expect_end()


def sessions_of(page):
    for block in re.finditer(r"^```session\n(.*?)^```$", page, re.MULTILINE | re.DOTALL):
        first_line = page.count("\n", 0, block.start(1)) + 1
        yield [(first_line + index, line) for index, line in enumerate(block[1].splitlines())]


def main():
    programs, page = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    failures = played = 0
    for session_lines in sessions_of(page.read_text()):
        played += 1
        with scratch_directory() as directory:
            number, session = session_lines[0][0], Session(programs, directory)
            try:
                session.start()
                for number, line in session_lines:
                    session.play(line)
                session.end()
            except (AssertionError, ValueError, subprocess.CalledProcessError) as error:
                failures += 1
                print(f"{page.name}:{number}: {error}")
            finally:
                session.agent.kill()
    print(f"{page.name}: {played} sessions, {failures} failed")
    sys.exit(1 if failures or not played else 0)


main()
