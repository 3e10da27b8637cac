#!/usr/bin/env python3
"""Compares the lines of JSON in the documents with the schema: check_documents.py SCHEMA PROJECT

A line is an object with a key "command", "event" or "ok", in a block of code or between backquotes. In the sessions
that show refusals, a command that is refused need not match.
"""

import pathlib
import re
import sys

sys.dont_write_bytecode = True  # keeps the source directory clean

from protocol_schema import ProtocolSchema, decoded  # noqa: E402

_PAGES = ("README.md", "docs/*.md", "docs/man/*.md", "Clients/*/README.md")
_OBJECT = re.compile(r'\{\s*"[^`]*\}')
_CODE = re.compile(r"^```.*?^```|`[^`\n]+`", re.MULTILINE | re.DOTALL)


def examples_of(page):
    """Gives the line's number and the object of each example, an object's lines in the order of the page."""
    for code in _CODE.finditer(page):
        for line in re.finditer(r"[^\n]+", code[0]):
            found = _OBJECT.search(line[0])
            if found and ("command" in found[0] or "event" in found[0] or '"ok"' in found[0]):
                yield page.count("\n", 0, code.start() + line.start()) + 1, found[0]


def with_paths(text):
    return text.replace('"…', '"/…').replace("$TMPDIR", "/tmp").replace('"/…"', '"/….png"')


def main():
    schema, project = ProtocolSchema(sys.argv[1]), pathlib.Path(sys.argv[2])
    examples = failures = refused = 0
    for path in sorted(page for pattern in _PAGES for page in project.glob(pattern)):
        command = None  # the last, with what is wrong with it
        for number, text in examples_of(path.read_text()):
            place = f"{path.relative_to(project)}:{number}"
            examples += 1
            try:
                value = decoded(with_paths(text).encode())
            except ValueError as error:
                failures += 1
                print(f"{place}: {error}: {text}")
                continue
            name = next((key for key in ("command", "event") if key in value), "reply")
            error = schema.error(name, value)
            if name == "command" and error:
                command = (value.get("request_id"), f"{place}: {error}: {text}")
            elif name == "reply" and command and not value.get("ok") and value.get("request_id") == command[0]:
                refused += 1
                command = None
            elif error:
                failures += 1
                print(f"{place}: {error}: {text}")
            if command and (name != "command" or command[0] != value.get("request_id")):
                failures += 1
                print(command[1])
                command = None
        if command:
            failures += 1
            print(command[1])
    print(f"{examples} examples, of which {refused} show refused commands; {failures} failures")
    sys.exit(1 if failures or not examples else 0)


main()
