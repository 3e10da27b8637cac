"""Tests what the agent reports when another application copies."""

import pathlib

from pictures import make_png
from session_case import MARKER_TYPE, SessionCase, text_event

LARGEST_TEXT = 4 * 1024 * 1024  # bytes
TEXT_IGNORED = {"event": "log", "level": "warning", "message": "Texte presse-papiers ignoré (>4 Mio)"}

# The names cover both Unicode forms of é and the characters that are special in a URL.
FILE_NAMES = ("two words.txt", "composed-\u00e9.txt", "decomposed-e\u0301.txt", "100%25.txt", "a#b?c&d.txt",
              "\U0001f600 'quoted'.txt")


class TextTests(SessionCase):
    def setUp(self):
        super().setUp()
        self.start()

    def expect_text(self, text):
        self.copy_text(text)
        self.expect_described(text_event(text))

    def test_text_is_reported(self):
        for text in ("Bonjour", "Voil\u00e0, na\u00efve e\u0301t\u00e9: \u20ac 10",
                     "\U0001f600\U0001f468\u200d\U0001f469", "one line\nanother\r\n\tand a third\n",
                     "a/b\\c\"d", "ab", "abc"):
            with self.subTest(text):
                self.expect_text(text)
        self.quit()

    def test_text_of_no_length_is_reported(self):
        self.expect_text("")
        self.quit()

    def test_a_password_managers_mark_changes_nothing(self):
        for mark in ("org.nspasteboard.ConcealedType", "org.nspasteboard.TransientType", "x-kde-passwordManagerHint"):
            with self.subTest(mark):
                self.copy("set", f"text={self.file('text', b'password')}", f"{mark}={self.file('mark', b'secret')}")
                self.expect_described(text_event("password"))
        self.quit()

    def test_the_same_text_is_reported_again(self):
        self.expect_text("again")
        self.expect_text("again")
        self.quit()

    def test_text_is_reported_up_to_its_limit(self):
        largest = b"0123456789abcde\n" * (LARGEST_TEXT // 16)
        self.expect_text(largest)
        self.copy_text(largest + b"x")
        self.expect_described(TEXT_IGNORED)
        self.expect_text("after that")
        self.quit()

    def test_a_marker_is_reported(self):
        for marker in ("parent-7", "d\u2019ailleurs/\U0001f600 \"x\""):
            self.copy("set", f"text={self.file('text', b'Bonjour')}",
                      f"{MARKER_TYPE}={self.file('marker', marker.encode())}")
            self.expect_described(text_event("Bonjour"), marker)
        self.quit()


class FileTests(SessionCase):
    def setUp(self):
        super().setUp()
        self.start()

    def expect_files(self, paths):
        event = self.described()
        found, wanted = event.pop("paths", []), [str(path) for path in paths]
        self.expect_same(event, {"event": "change", "kind": "files"})
        self.assertEqual(self.place.comparable_paths(found), self.place.comparable_paths(wanted))
        self.expect_silence()

    def test_files_are_reported_in_their_order(self):
        paths = [self.file(name) for name in FILE_NAMES]
        folder = self.directory / "a folder"
        folder.mkdir()
        paths.append(folder)
        self.copy("copy-files", *paths)
        self.expect_files(paths)
        self.copy("copy-files", *reversed(paths))
        self.expect_files(reversed(paths))
        self.quit()


class ExportTests(SessionCase):
    """Each test exports once, because the agent may announce a content twice right after another export."""

    def setUp(self):
        super().setUp()
        self.start()

    def expect_contents(self, files, contents):
        self.assertEqual([file.name for file in files], list(contents))
        for file in files:
            self.assertTrue(file.read_bytes() == contents[file.name], file)

    def expect_below_temporary_directory(self):
        self.assertEqual(self.export_directory.resolve().parent, self.place.temporary_directory.resolve())

    def test_a_picture_is_exported(self):
        picture = make_png(300, 200)
        self.copy("copy", "--type", "png", content=picture)
        [file] = self.exported("image")
        self.expect_contents([file], {file.name: picture})
        self.assertEqual(file.suffix, ".png")
        self.assertEqual(file.parent.resolve(), self.export_directory.resolve())
        self.expect_private_directory(file.parent)
        self.expect_below_temporary_directory()
        self.quit()
        self.assertFalse(file.exists())

    def test_a_picture_is_exported_with_its_marker_and_without_the_text_beside_it(self):
        picture = make_png(3, 2)
        self.copy("set", f"text={self.file('text', b'Bonjour')}", f"png={self.file('picture', picture)}",
                  f"{MARKER_TYPE}={self.file('marker', b'parent-7')}")
        [file] = self.exported("image", "parent-7")
        self.expect_contents([file], {file.name: picture})
        self.quit()

    def test_formats_are_exported(self):
        html, rtf = "<p>Voil\u00e0 <b>\u20ac</b></p>".encode(), rb"{\rtf1\ansi Voil\'e0 {\b gras}}"
        self.copy("set", f"rtf={self.file('page.rtf', rtf)}", f"html={self.file('page.html', html)}")
        self.expect_formats({"text.html": html, "text.rtf": rtf})

    def test_formats_are_exported_with_their_text(self):
        html, text = b"<b>Bonjour</b>", "Bonjour \u00e9".encode()
        self.copy("set", f"text={self.file('page.txt', text)}", f"html={self.file('page.html', html)}")
        self.expect_formats({"text.html": html, "text.txt": text})

    def expect_formats(self, contents):
        files = self.exported("formats")
        self.expect_contents(files, contents)
        [directory] = {file.parent for file in files}
        self.expect_private_directory(directory)
        self.assertEqual(directory.resolve().parent, self.export_directory.resolve())
        self.expect_private_directory(self.export_directory)
        self.expect_below_temporary_directory()
        self.assertEqual(sorted(directory.iterdir()), [pathlib.Path(file) for file in files])
        self.quit()
        self.assertFalse(directory.exists())

    def test_a_discarded_picture_is_not_exported(self):
        self.copy("copy", "--type", "png", content=make_png(3, 2))
        kept = []  # the export may be faster than the command
        for event in self.discard():
            self.assertEqual(event.get("kind"), "image")
            kept += event["paths"]
        self.expect_silence()
        self.assertEqual([str(file) for file in self.export_directory.rglob("*")], kept)
        self.quit()
