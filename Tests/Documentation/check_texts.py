#!/usr/bin/env python3
"""Checks that pages have every reason and warning of the agent: check_texts.py MESSAGES_HEADER PAGE..."""

import pathlib
import re
import sys

# What is shown in the panel, or written to the system's log.
NOT_FOR_PARENTS = {"panelTitle", "panelCancel", "panelConfirm", "invalidName", "extensionKept", "fileNotPrepared"}

# A constant, or the beginning of what a function returns.
TEXT = re.compile(r'(?:string_view|string) (\w+)(?: =|\([^)]*\) \{(?:[^}]*?)return)\s*((?:"[^"]*"\s*)+)')


def texts_of(header):
    return {name: "".join(re.findall(r'"([^"]*)"', literals)) for name, literals in TEXT.findall(header)}


def main():
    texts = texts_of(pathlib.Path(sys.argv[1]).read_text())
    for_parents = {name: text for name, text in texts.items() if name not in NOT_FOR_PARENTS}
    assert NOT_FOR_PARENTS < texts.keys() and len(for_parents) >= 19, f"found {sorted(texts)}"
    failures = 0
    for page in map(pathlib.Path, sys.argv[2:]):
        for text in for_parents.values():
            if text not in page.read_text():
                failures += 1
                print(f"{page.name} lacks: {text}")
    print(f"{len(for_parents)} texts, {failures} missing")
    sys.exit(1 if failures else 0)


main()
