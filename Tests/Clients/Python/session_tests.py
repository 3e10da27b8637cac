"""Sessions of the Python client with the real agent and another application, in the place that in-place has made."""

import asyncio
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import tavel_clipboard
from tavel_clipboard import Change, ClipboardAgent, FilesChange, FormatsChange, ImageChange, TextChange

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent.parent / "Support"))

from pictures import make_png, make_random_png  # noqa: E402

AGENT, TOOL, PLACE = (os.environ["TAVEL_TEST_" + name] for name in ("AGENT", "PASTEBOARD", "PLACE"))
TIMEOUT = 60  # seconds; a busy machine needs far less
MARKER_TYPE = "com.corvelle.tavelbridge.clipboard-origin-v1"
LARGEST_TEXT = ("Voilà/\n" * (4 * 1024 * 1024)).encode()[:4 * 1024 * 1024].decode(errors="ignore")


def tool(*arguments, content=b""):
    return subprocess.run([TOOL, *map(str, arguments)], input=content, stdout=subprocess.PIPE, check=True,
                          timeout=TIMEOUT).stdout


def copy(text):
    tool("copy", content=text.encode())


class SessionCase(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)

    def file(self, name, content):
        path = self.directory / name
        path.write_bytes(content)
        return path


class ThreadedTests(SessionCase):
    def setUp(self):
        super().setUp()
        self.agent = ClipboardAgent(AGENT)
        self.agent.start()
        self.addCleanup(self.agent.end)
        self.sequence = self.agent.ping()
        if PLACE == "wayland":  # without the module, the agent would use its store, on which the tests pass as well
            self.assertIn("tavel-wayland", pathlib.Path(f"/proc/{self.agent.pid}/maps").read_text())

    def described(self):
        announcement, description = (self.agent.next_event(TIMEOUT) for _ in range(2))
        self.assertIs(type(announcement), Change)
        self.assertGreater(announcement.sequence, self.sequence)
        self.sequence = announcement.sequence
        self.assertEqual(description.sequence, self.sequence)
        return description

    def test_texts_of_every_length_of_base64_are_reported(self):
        for text in ("", "a", "é", "été", "Voilà 😀\0/\\\""):
            copy(text)
            self.assertEqual(self.described(), TextChange(self.sequence, "", text))

    def test_the_largest_text_passes_both_ways(self):
        copy(LARGEST_TEXT)
        self.assertEqual(self.described().text, LARGEST_TEXT)
        self.agent.write_text(LARGEST_TEXT.upper())
        self.assertEqual(tool("paste").decode(), LARGEST_TEXT.upper())

    def test_a_text_is_written_with_its_marker(self):
        self.assertGreater(self.agent.write_text("Bonjour", marker="d'ici 😀"), self.sequence)
        self.assertEqual(tool("paste"), b"Bonjour")
        self.assertEqual(tool("paste", "--type", MARKER_TYPE).decode(), "d'ici 😀")

    def test_large_pictures_pass_both_ways(self):
        picture = make_random_png(1200, 1000, (1, 2, 3))
        self.agent.write_image_data(picture)
        self.assertEqual(tool("paste", "--type", "png"), picture)
        self.sequence = self.agent.ping()
        picture = make_random_png(1000, 1200, (1, 2, 3))
        tool("copy", "--type", "png", content=picture)
        event = self.described()
        self.assertIsInstance(event, ImageChange)
        self.assertEqual(pathlib.Path(event.path).read_bytes(), picture)

    def test_files_pass_both_ways(self):
        paths = [self.file(name, b"content") for name in ("d'été.txt", "100%.txt")]
        tool("copy-files", *paths)
        self.assertEqual(self.described(), FilesChange(self.sequence, "", tuple(map(str, paths))))
        self.assertEqual(self.agent.write_files(paths, "m", self.sequence), self.agent.ping())
        with self.assertRaises(tavel_clipboard.CommandRefused) as refused:
            self.agent.write_files(paths, "m", self.sequence)
        self.assertEqual(refused.exception.reason, "Le presse-papiers local a changé pendant le transfert")

    def test_formats_pass_both_ways(self):
        html, text = self.file("text.html", b"<b>Bonjour</b>"), self.file("text.txt", b"Bonjour")
        tool("set", f"html={html}", f"text={text}")
        event = self.described()
        self.assertIsInstance(event, FormatsChange)
        self.assertEqual([os.path.basename(path) for path in event.paths], ["text.html", "text.txt"])
        tool("clear")
        self.agent.write_formats([html, text])
        self.assertEqual(tool("paste"), b"Bonjour")
        self.agent.write_image(self.file("picture", make_png(3, 2)))
        self.assertEqual(tool("paste", "--type", "png"), make_png(3, 2))

    def test_a_refusal_has_the_reason(self):
        with self.assertRaises(tavel_clipboard.CommandRefused) as refused:
            self.agent.write_image_data(b"no picture")
        self.assertEqual((refused.exception.reason, refused.exception.sequence),
                         ("Image historique invalide", self.sequence))
        self.agent.configure_file_prompt(False)
        self.agent.discard_pending()

    def test_an_agent_is_started_again(self):
        first = self.agent.pid
        self.agent.restart()
        self.assertNotEqual(self.agent.pid, first)
        self.assertFalse(pathlib.Path(f"/proc/{first}").exists(), "the first agent is still there")
        self.sequence = self.agent.ping()
        copy("after that")
        self.assertEqual(self.described().text, "after that")


class AsynchronousTests(SessionCase):
    def test_commands_and_events_at_the_same_time(self):
        async def session():
            async with tavel_clipboard.AsyncClipboardAgent(AGENT) as agent:
                before = await agent.ping()
                loop = asyncio.get_running_loop()
                copying = loop.run_in_executor(None, copy, LARGEST_TEXT)
                sequences = await asyncio.gather(*(agent.ping() for _ in range(200)))
                self.assertEqual(sequences, sorted(sequences))
                await copying
                async for event in agent:
                    if isinstance(event, TextChange):
                        break
                self.assertEqual((event.sequence > before, event.text), (True, LARGEST_TEXT))
                await agent.write_text("Bonjour")
                self.assertEqual(await loop.run_in_executor(None, tool, "paste"), b"Bonjour")
                first = agent.pid
                await agent.restart()
                await agent.ping()
                self.assertNotEqual(agent.pid, first)
            self.assertFalse(agent.running)
            self.assertIsNone(await agent.next_event())

        asyncio.run(session())


unittest.main(verbosity=2)
