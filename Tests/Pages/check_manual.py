#!/usr/bin/env python3
"""Checks manual pages: check_manual.py AGENT_ARGUMENTS_SOURCE BIN_DIRECTORY PAGE...

Each page must render without a warning and have its chapters. Pages and programs must name the same options and
commands; those of the agent, which prints no help, stand in the source that reads its arguments.
"""

import os
import pathlib
import re
import subprocess
import sys

sys.dont_write_bytecode = True  # keeps the source directory clean

from tool_help import Help  # noqa: E402

PROGRAM_CHAPTERS = ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "SEE ALSO"]
OTHER_CHAPTERS = ["NAME", "DESCRIPTION", "SEE ALSO"]
HELP_OPTIONS = {"-h", "--help"}  # of every command; a page tells it once

failures = []


def expect_same(place, what, told, true):
    for name in sorted(true - told):
        failures.append(f"{place}: the {what} {name} is missing")
    for name in sorted(told - true):
        failures.append(f"{place}: there is no {what} {name}")


class Page:
    def __init__(self, path):
        self.path = path
        self.name, self.section = path.stem, path.suffix[1:]
        self.terms = {}  # (chapter, its part or ""): the terms that it explains
        self._read()

    def _read(self):
        place, after_tag = ("", ""), False
        for line in self.path.read_text().splitlines():
            plain = re.sub(r"\\f\[.*?\]", "", line).replace("\\-", "-").replace("\\", "")
            heading = re.match(r"\.(SH|SS) (.*)", plain)
            if heading:
                title = heading[2].strip('"')
                place = (title, "") if heading[1] == "SH" else (place[0], title)
                self.terms[place] = []
            elif after_tag:
                self.terms[place].append(plain)
            after_tag = plain == ".TP"

    def chapters(self):
        return [chapter for chapter, part in self.terms if not part]

    def parts(self, chapter):
        return {part for above, part in self.terms if above == chapter and part}

    def words(self, chapter, part=""):
        """What the terms begin with: "-h, --help" gives both, "--type TYPE" gives "--type"."""
        terms = self.terms.get((chapter, part), [])
        return {re.split(r"[ =]", name)[0] for term in terms for name in term.split(", ")}


def render(page, *options, **environment):
    """The page as text. Reports what is wrong with it."""
    command = ["man", "--warnings", "-E", "UTF-8", *options, "-l", str(page.path)]
    clean = {"PATH": os.environ["PATH"], "HOME": "/nonexistent", "LC_ALL": "C.UTF-8", "MANWIDTH": "80"}
    run = subprocess.run(command, capture_output=True, text=True, timeout=60, env=clean | environment)
    if run.returncode != 0 or run.stderr:
        failures.append(f"{page.path.name}: man says: {run.stderr.strip()}")
    return run.stdout


def check_text(page):
    text = render(page)
    render(page, "-Tutf8", "-Z", MANROFFSEQ="")  # as lintian does, without the preprocessor of tables
    for sign in ["**", "](", ".md#", "|--", "\n# ", "```"]:
        if sign in text:
            failures.append(f"{page.path.name}: Markdown is left: {sign.strip()}")
    chapters = page.chapters()
    for chapter in PROGRAM_CHAPTERS if page.section == "1" else OTHER_CHAPTERS:
        if chapter not in chapters:
            failures.append(f"{page.path.name}: the chapter {chapter} is missing")
    return text


def check_tool(page, program, text):
    tool = Help(program)
    expect_same(page.name, "option", page.words("OPTIONS"), tool.options())
    expect_same(page.name, "command", page.parts("COMMANDS"), tool.commands())
    for command in sorted(tool.commands()):
        told = page.words("COMMANDS", command)
        expect_same(f"{page.name} {command}", "option", told, Help(program, command).options() - HELP_OPTIONS)
    expect_same(page.name, "command", page.words("COMMANDS OF A SESSION"), tool.session_commands())
    told = dict(re.findall(r"^ +([a-z-]+) +([a-z]+\.[a-z0-9.-]+)$", text, re.MULTILINE))
    expect_same(page.name, "type", set(told.items()), set(tool.types().items()))


def main():
    arguments_source, programs = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    pages = [Page(pathlib.Path(path)) for path in sys.argv[3:]]
    for page in pages:
        text = check_text(page)
        if page.name == "TavelClipboardAgent":
            true = set(re.findall(r'"(--[a-z-]+)"', arguments_source.read_text()))
            expect_same(page.name, "option", page.words("OPTIONS"), true)
        elif page.section == "1":
            check_tool(page, programs / page.name, text)
    print("\n".join(failures) or f"{len(pages)} pages are right")
    sys.exit(1 if failures or not pages else 0)


main()
