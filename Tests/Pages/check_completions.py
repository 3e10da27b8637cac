#!/usr/bin/env python3
"""Checks what a shell offers for the tools: check_completions.py SHELL COMPLETIONS_DIRECTORY BIN_DIRECTORY

It must be what --help tells, and nothing else.
"""

import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True  # keeps the source directory clean

from shells import SHELLS  # noqa: E402
from tool_help import Help  # noqa: E402

FILES = {"one file", "two"}
GENERAL = {"tavel-pasteboard": {"--pasteboard"}}  # options that also the commands take

failures = []


def expect(shell, line, wanted):
    offered = {word.removesuffix("=") for word in shell.offers(line)}  # zsh does not count the sign to the word
    if offered != set(wanted):
        failures.append(f"{line!r}: {sorted(offered)} is offered instead of {sorted(wanted)}")


def check_tool(shell, programs, name):
    tool = Help(programs / name)
    expect(shell, f"{name} -", tool.options())
    if tool.commands():
        expect(shell, f"{name} ", tool.commands())
    for command in sorted(tool.commands()):
        options = Help(programs / name, command).options() | GENERAL.get(name, set())
        expect(shell, f"{name} {command} -", options)
    return tool


def check_values(shell, types):
    expect(shell, "tavel-console --agent ", FILES)
    expect(shell, "tavel-console --pasteboard ", [])
    expect(shell, "tavel-console --trace ", FILES)
    expect(shell, "tavel-console --replay two --speed ", [])
    expect(shell, "tavel-pasteboard copy ", FILES)
    expect(shell, "tavel-pasteboard copy --type ", types)
    expect(shell, "tavel-pasteboard --pasteboard copy paste --type t", {"text", "tiff"})
    expect(shell, "tavel-pasteboard copy-files two ", FILES)
    expect(shell, "tavel-pasteboard set html=two ", types)
    expect(shell, "tavel-pasteboard set html=two text=", FILES)
    expect(shell, "tavel-pasteboard set text=o", {"one file"})
    expect(shell, "tavel-pasteboard count ", [])


def main():
    programs = pathlib.Path(sys.argv[3])
    with tempfile.TemporaryDirectory() as home:
        shell = SHELLS[sys.argv[1]](pathlib.Path(sys.argv[2]).resolve(), pathlib.Path(home))
        (shell.home / "work").mkdir()
        for name in FILES:
            (shell.home / "work" / name).touch()
        check_tool(shell, programs, "tavel-console")
        pasteboard = check_tool(shell, programs, "tavel-pasteboard")
        check_values(shell, pasteboard.types())
    print("\n".join(failures) or f"{sys.argv[1]} offers what there is")
    sys.exit(1 if failures else 0)


main()
