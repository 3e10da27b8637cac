#!/usr/bin/env python3
"""Tests the schema of the protocol: check_limits.py SCHEMA

It must be a schema, accept each example and what lies at a limit, and refuse what lies beyond the limit, lacks a
required field, has an unknown one, or has a value of another type.
"""

import sys

sys.dont_write_bytecode = True  # keeps the source directory clean

from protocol_schema import ProtocolSchema  # noqa: E402

UINT64, INT64 = 2**64 - 1, 2**63 - 1
FORMATS = ["document.pdf", "image.gif", "image.jpeg", "image.png", "image.svg", "image.tiff", "image.webp", "text.html",
           "text.rtf", "text.txt"]
FORMAT_PATHS = [f"/a\nb/{name}" for name in FORMATS]
UNREADABLE = "Presse-papiers : formats annoncés mais aucune représentation lisible/valide"
UNPREPARED = "Presse-papiers : échec de préparation des formats"


def omitted(characters):
    """Stands for so many characters of base64, as in recorded lines."""
    return f"\x01{characters}\x01"


def change(**fields):
    return {"event": "change", **fields, "marker": "", "sequence": 1}


def write_files(kind, paths):
    return {"command": "write_files", "request_id": 1, "kind": kind, "paths": paths, "marker": "m"}


# A definition, an example of it, its optional fields, and for some fields the values at the limit and those beyond it.
NUMBER = {"request_id": ([0, UINT64], [-1, UINT64 + 1, 1.5])}
SEQUENCE = {"sequence": ([0, INT64], [-1, INT64 + 1])}
MARKER = {"marker": (["", "m" * 512], ["m" * 513])}
EXPECTED = {"expected_sequence": ([0, UINT64], [-1, UINT64 + 1])}
CASES = [
    ("ping", {"command": "ping", "request_id": 1}, NUMBER | {"command": ([], ["Ping", ""])}),
    ("discard_pending", {"command": "discard_pending", "request_id": 1}, NUMBER),
    ("quit", {"command": "quit", "request_id": 1}, NUMBER),
    ("configure_file_prompt", {"command": "configure_file_prompt", "request_id": 1, "rename_prompt": True},
     NUMBER | {"rename_prompt": ([True, False], [0, 1])}),
    ("write_text", {"command": "write_text", "request_id": 1, "text_b64": "aGk", "marker": "m"},
     NUMBER | MARKER | {"text_b64": (
         ["", "aGk=", omitted(5592404) + "QQ", omitted(5592404) + "QQ=="],
         ["a-_", "aGk\n", "a===", omitted(5592404) + "QUE", omitted(5592404) + "QUE=", omitted(5592404) + "QUFB",
          omitted(5592408) + "QQ=="])}),
    ("write_image_data", {"command": "write_image_data", "request_id": 1, "image_b64": "aGk"},
     NUMBER | {"image_b64": (
         [omitted(89478484) + "QUE"[:2], omitted(89478484) + "QUE="],
         ["", "a b", "===", omitted(89478484) + "QUFB", omitted(89478488) + "QUE="])}),
    ("write_files_files", write_files("files", ["/a"]) | {"expected_sequence": 1},
     NUMBER | MARKER | EXPECTED | {"kind": ([], ["text", "unsupported"]),
                                   "paths": ([["/"], ["/a"] * 10000], [[], ["/a"] * 10001, ["a"], [""], ["/a", 1]])}),
    ("write_files_image", write_files("image", ["/a"]) | {"expected_sequence": 1},
     NUMBER | MARKER | EXPECTED | {"paths": ([["/a"]], [[], ["/a", "/b"], ["a"]])}),
    ("write_files_formats", write_files("formats", ["/text.txt"]) | {"expected_sequence": 1},
     NUMBER | MARKER | EXPECTED | {"paths": ([FORMAT_PATHS], [
         [], ["/text.TXT"], ["text.txt"], ["/a/text.txt/"], ["/a.text.txt"], FORMAT_PATHS + ["/b/text.txt"],
         ["/text.txt", "/text.txt"]])}),
    ("success", {"request_id": 1, "ok": True, "reason": "", "sequence": 1},
     NUMBER | SEQUENCE | {"ok": ([], [False]), "reason": ([], ["Fichiers clipboard invalides"])}),
    ("failure", {"request_id": 1, "ok": False, "reason": "Fichiers clipboard invalides", "sequence": 1},
     NUMBER | SEQUENCE | {"ok": ([], [True]), "reason": (["Format clipboard inconnu"], ["", "Fichier invalide"])}),
    ("change_unsupported", change(kind="unsupported"), SEQUENCE | MARKER | {"kind": ([], ["files", "text"])}),
    ("change_text", change(text_b64="aGk", bytes=2), SEQUENCE | MARKER | {
        "text_b64": (["", omitted(5592404) + "QQ"], ["aGk=", omitted(5592404) + "QUE"]),
        "bytes": ([0, 4194304], [-1, 4194305])}),
    ("change_files", change(kind="files", paths=["/a"]), SEQUENCE | MARKER | {
        "paths": ([["/a"] * 10000, ["/" + "a" * 2097151]], [[], ["/a"] * 10001, ["a"], ["/" + "a" * 2097152]])}),
    ("change_image", change(kind="image", paths=["/a.png"]), SEQUENCE | MARKER | {
        "paths": ([["/.png"]], [[], ["/a.png", "/b.png"], ["/a.jpg"], ["a.png"]])}),
    ("change_formats", change(kind="formats", paths=["/text.txt"]), SEQUENCE | MARKER | {
        "paths": ([FORMAT_PATHS], [[], ["/a.txt"], FORMAT_PATHS + ["/b/text.txt"]])}),
    ("log", {"event": "log", "level": "warning", "message": "Texte presse-papiers ignoré (>4 Mio)"}, {
        "level": ([], ["error"]),
        "message": (
            [f"{UNREADABLE} ().", f"{UNREADABLE} (public.rtf).", f"{UNREADABLE} (public.rtf, com.adobe.pdf).",
             f"{UNPREPARED} (NSCocoaErrorDomain:640)."],
            ["", f"{UNREADABLE} (public.text).", f"{UNREADABLE} (public.rtf, ).",
             f"{UNREADABLE} (public.rtfpublic.html).", f"{UNREADABLE} (public.rtf)", f"{UNPREPARED} (640)."])}),
    ("file_renamed", {"event": "file_renamed", "sequence": 1}, SEQUENCE),
]
OPTIONAL = {"expected_sequence"}
OTHER_TYPES = [None, True, 7, 7.0, "7", ["/a"], {"a": 1}]


class Table:
    def __init__(self, schema):
        self.schema = schema
        self.examples = self.failures = 0

    def expect(self, accepted, name, value):
        """The definition and the entry point above it must agree."""
        self.examples += 1
        entry = next(key for key in ("command", "event", "reply") if key in value or key == "reply")
        for definition in (name, entry):
            if self.schema.matches(definition, value) != accepted:
                self.failures += 1
                print(f"{definition} {'refuses' if accepted else 'accepts'} {str(value)[:300]}")

    def check(self, name, example, limits):
        self.expect(True, name, example)
        self.expect(False, name, example | {"unknown": 1})
        for field in example:
            without = {key: value for key, value in example.items() if key != field}
            self.expect(field in OPTIONAL, name, without)
            for value in OTHER_TYPES:
                if type(value) is not type(example[field]):
                    self.expect(False, name, example | {field: value})
        if "kind" in example:
            self.expect(False, name, example | {"kind": "text"})
        for field, (within, beyond) in limits.items():
            for value in within:
                self.expect(True, name, example | {field: value})
            for value in beyond:
                self.expect(False, name, example | {field: value})


def main():
    schema = ProtocolSchema(sys.argv[1])
    schema.check_itself()
    table = Table(schema)
    for case in CASES:
        table.check(*case)
    leaves = {name for name, definition in schema.document["$defs"].items() if "additionalProperties" in definition}
    missing = leaves ^ {name for name, _, _ in CASES}
    if missing:
        sys.exit(f"without an example: {missing}")
    print(f"{table.examples} examples, {table.failures} failures")
    sys.exit(1 if table.failures else 0)


main()
