"""Tests what another application finds after the agent has written."""

from copying_tests import FILE_NAMES, LARGEST_TEXT
from pictures import make_png
from session_case import SessionCase, base64_of, text_event

CHANGED = "Le presse-papiers local a changé pendant le transfert"
INVALID_FILES = "Fichiers clipboard invalides"
INVALID_FORMATS = "Formats clipboard invalides"
INVALID_IMAGE = "Image clipboard invalide ou trop grande"
INVALID_HISTORY_IMAGE = "Image historique invalide"
INVALID_TEXT = "Texte clipboard invalide"
UNKNOWN_FORMAT = "Format clipboard inconnu"

# Its header states more pixels than the agent allows.
HUGE_PICTURE = make_png(60_000, 60_000, b"")


class WritingCase(SessionCase):
    def setUp(self):
        super().setUp()
        self.start()

    def write_text(self, text, marker):
        self.write("write_text", text_b64=base64_of(text), marker=marker)

    def write_files(self, kind, paths, marker, **fields):
        self.write("write_files", kind=kind, paths=[str(path) for path in paths], marker=marker, **fields)

    def expect_files(self, paths):
        found = self.tool("paste-files").decode().splitlines()
        wanted = [str(path) for path in paths]
        self.assertEqual(self.place.comparable_paths(found), self.place.comparable_paths(wanted))

    def expect_not_reported(self):
        """The agent must not report its own write, but must report the next copy."""
        self.expect_silence()
        self.copy_text("copied later")
        self.expect_described(text_event("copied later"))
        self.quit()


class WritingTests(WritingCase):
    def test_text(self):
        for text, marker in (("Voil\u00e0 \U0001f600,\nde l\u2019autre c\u00f4te\u0301\t!", "parent-1"),
                             ("", "m" * 512), ("a\u20ac", "d\u2019ailleurs")):
            self.write_text(text, marker)
            self.expect_on_pasteboard(text.encode())
            self.expect_marker(marker)
        self.expect_not_reported()

    def test_base64_without_its_end(self):
        self.write("write_text", text_b64="Qm9uam91cg", marker="m")
        self.expect_on_pasteboard(b"Bonjour")
        self.expect_not_reported()

    def test_text_up_to_its_limit(self):
        largest = b"0123456789abcde\n" * (LARGEST_TEXT // 16)
        self.write_text(largest, "m")
        self.expect_refused(INVALID_TEXT, "write_text", text_b64=base64_of(largest + b"x"), marker="m")
        self.expect_on_pasteboard(largest)
        self.expect_not_reported()

    def test_a_picture_of_the_history(self):
        picture = make_png(120, 80)
        self.write("write_image_data", image_b64=base64_of(picture))
        self.expect_on_pasteboard(picture, "png")
        self.expect_no_marker()
        self.expect_not_reported()

    def test_files(self):
        paths = [*map(self.file, FILE_NAMES), self.directory]
        self.write_files("files", paths, "parent-2")
        self.expect_files(paths)
        self.expect_marker("parent-2")
        self.expect_not_reported()

    def test_a_picture_from_a_file(self):
        picture = make_png(120, 80)
        self.write_files("image", [self.file("a picture.png", picture)], "parent-3")
        self.expect_on_pasteboard(picture, "png")
        self.expect_marker("parent-3")
        self.expect_not_reported()

    def test_formats(self):
        contents = {"html": "<b>Voil\u00e0</b>".encode(), "rtf": rb"{\rtf1\ansi Voil\'e0}",
                    "txt": "Voil\u00e0".encode(), "png": make_png(12, 8)}
        names = {kind: f"{'image' if kind == 'png' else 'text'}.{kind}" for kind in contents}
        paths = [self.file(names[kind], content) for kind, content in contents.items()]
        self.write_files("formats", paths, "parent-4")
        self.expect_on_pasteboard(self.place.html_mark + contents["html"], "html")
        self.expect_on_pasteboard(contents["rtf"], "rtf")
        self.expect_on_pasteboard(contents["txt"], "text")
        self.expect_on_pasteboard(contents["png"], "png")
        self.expect_marker("parent-4")
        self.expect_not_reported()

    def test_only_what_was_expected_is_overwritten(self):
        paths = [self.file("a"), self.file("b")]
        seen = self.sequence
        self.copy_text("the user's")
        self.expect_described(text_event("the user's"))
        for kind, written in (("files", paths), ("nonsense", paths), ("image", []), ("formats", ["relative"])):
            self.expect_refused(CHANGED, "write_files", kind=kind, paths=[str(path) for path in written], marker="m",
                                expected_sequence=seen)
        self.expect_refused(CHANGED, "write_files", expected_sequence=self.sequence + 1)
        self.expect_on_pasteboard(b"the user's")
        self.write_files("files", paths, "m", expected_sequence=self.sequence)
        self.expect_files(paths)
        self.expect_not_reported()

    def test_a_copy_that_was_not_noticed_yet_wins(self):
        path, seen = str(self.file("a")), self.sequence
        self.copy_text("the user's")
        reply = self.agent.request(
            "write_files", kind="files", paths=[path], marker="m", expected_sequence=seen)
        self.assertEqual((reply["ok"], reply["reason"]), (False, CHANGED))
        self.assertGreater(reply["sequence"], seen)
        self.expect_described(text_event("the user's"))
        self.assertLessEqual(reply["sequence"], self.sequence)
        self.expect_on_pasteboard(b"the user's")
        self.quit()


class RefusalTests(WritingCase):
    """A refusal must keep the content and its change count."""

    def setUp(self):
        super().setUp()
        self.write_text("still there", "m")

    def expect_still_there(self):
        self.expect_on_pasteboard(b"still there")
        self.expect_not_reported()

    def test_texts(self):
        text = base64_of("Bonjour")
        for fields in ({"text_b64": text}, {"marker": "m"}, {}, {"text_b64": text, "marker": "m" * 513},
                       {"text_b64": text, "marker": "\u00e9" * 257}, {"text_b64": text, "marker": 7},
                       {"text_b64": 7, "marker": "m"}, {"text_b64": "Qm9u!", "marker": "m"},
                       {"text_b64": "Q", "marker": "m"}, {"text_b64": base64_of(b"\xff"), "marker": "m"}):
            self.expect_refused(INVALID_TEXT, "write_text", **fields)
        self.expect_still_there()

    def test_pictures_of_the_history(self):
        for fields in ({}, {"image_b64": 7}, {"image_b64": ""}, {"image_b64": "Qm9u!"},
                       {"image_b64": base64_of("no picture")}, {"image_b64": base64_of(HUGE_PICTURE)}):
            self.expect_refused(INVALID_HISTORY_IMAGE, "write_image_data", **fields)
        self.expect_still_there()

    def expect_files_refused(self, reason, kind, paths):
        self.expect_refused(reason, "write_files", kind=kind, paths=[str(path) for path in paths], marker="m")

    def test_files(self):
        path = str(self.file("a"))
        for fields in ({"paths": [path]}, {"paths": [path], "marker": "m" * 513}, {"marker": "m"},
                       {"paths": [], "marker": "m"}, {"paths": path, "marker": "m"},
                       {"paths": [path, 7], "marker": "m"}, {"paths": ["a"], "marker": "m"},
                       {"paths": [path, path + "-missing"], "marker": "m"}, {"paths": [""], "marker": "m"},
                       {"paths": [path] * 10_001, "marker": "m"}):
            for kind in ("files", "image", "formats", "nonsense"):
                self.expect_refused(INVALID_FILES, "write_files", kind=kind, **fields)
        self.expect_still_there()

    def test_unknown_kinds(self):
        path = str(self.file("a"))
        for fields in ({}, {"kind": "text"}, {"kind": ""}, {"kind": "Files"}, {"kind": 7}):
            self.expect_refused(UNKNOWN_FORMAT, "write_files", paths=[path], marker="m", **fields)
        self.expect_still_there()

    def test_pictures(self):
        picture = self.file("picture.png", make_png(3, 2))
        for paths in ([picture, picture], [self.directory], [self.file("empty.png", b"")],
                      [self.file("text.png", b"no picture")], [self.file("huge.png", HUGE_PICTURE)]):
            self.expect_files_refused(INVALID_IMAGE, "image", paths)
        self.expect_still_there()

    def test_formats(self):
        text, html = self.file("text.txt", b"Bonjour"), self.file("text.html", b"<b>Bonjour</b>")
        other = self.directory / "other"
        other.mkdir()

        def other_file(name, content):
            path = other / name
            path.write_bytes(content)
            return path

        link = other / "text.txt"
        link.symlink_to(text)
        for paths in ([text, self.file("text.md")], [html, text, html], [text, other_file("text.html", b"")], [link],
                      [other_file("text.html", b"a\0b")], [other_file("text.html", b"\xff")],
                      [text, other_file("text.rtf", b"no RTF")], [other_file("document.pdf", b"no PDF")],
                      [other_file("image.png", b"no picture")], [self.directory]):
            self.expect_files_refused(INVALID_FORMATS, "formats", paths)
        self.expect_still_there()
