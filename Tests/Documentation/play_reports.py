#!/usr/bin/env python3
"""Runs the commands of a Markdown page and compares what they print: play_reports.py BIN_DIRECTORY PAGE

A fenced block marked "report" begins with the line "$ command", which the shell runs on a machine without a display,
with the project's programs in its path. The clipboard there holds a text of eleven bytes. The other lines are what
the command prints. In them "…" stands for any text, and a time in milliseconds for any time.
"""

import os
import pathlib
import re
import subprocess
import sys

sys.dont_write_bytecode = True  # keeps the source directory clean
sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "Support"))

from agent_process import TIMEOUT  # noqa: E402
from scratch_places import environment_in, scratch_directory  # noqa: E402


def pattern(line):
    parts = re.split(r"(…|\d+\.\d\d ms)", line)
    wildcards = {True: r"\d+\.\d\d ms", False: ".*"}
    return "".join(
        wildcards[part.endswith(" ms")] if index % 2 else re.escape(part) for index, part in enumerate(parts))


def difference(expected, printed):
    """Describes the first line that differs; None if none does."""
    for number in range(max(len(expected), len(printed))):
        wanted = expected[number] if number < len(expected) else None
        got = printed[number] if number < len(printed) else None
        if wanted is None or got is None or not re.fullmatch(pattern(wanted), got):
            return f"line {number + 1}: expected {wanted!r}, got {got!r}"
    return None


def printed_by(command, programs):
    with scratch_directory() as directory:
        environment = environment_in(directory, PATH=f"{programs}:{os.environ['PATH']}")
        subprocess.run(["tavel-pasteboard", "copy"], input=b"eleven char", env=environment, check=True)
        run = subprocess.run(
            command, shell=True, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIMEOUT)
    return run.stdout.decode().splitlines()


def main():
    programs, page = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    blocks = re.findall(r"^```report\n\$ (.*)\n((?:.*\n)*?)```$", page.read_text(), re.MULTILINE)
    failures = 0
    for command, output in blocks:
        found = difference(output.splitlines(), printed_by(command, programs))
        if found is not None:
            failures += 1
            print(f"{page.name}: {command}: {found}")
    print(f"{page.name}: {len(blocks)} reports, {failures} failed")
    sys.exit(1 if failures or not blocks else 0)


main()
