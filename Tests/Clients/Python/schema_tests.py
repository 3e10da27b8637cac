"""The Python client sends what the protocol's schema allows, and understands every event of it."""

import os
import unittest

from tavel_clipboard import (Change, ClipboardAgent, FileRenamed, FilesChange, FormatsChange, ImageChange, LogMessage,
                             TextChange)


class SchemaTests(unittest.TestCase):
    def test_the_client_follows_the_schema(self):
        with ClipboardAgent(os.environ["TAVEL_TEST_SCHEMA_AGENT"]) as agent:
            agent.ping()
            events = [agent.next_event(60) for _ in range(7)]
            agent.write_text("é", marker="m")
            agent.write_files(["/a", "/b"], expected_sequence=1)
            agent.write_image("/a", expected_sequence=1)
            agent.write_formats(["/text.txt"], expected_sequence=1)
            agent.write_image_data(b"picture")
            agent.discard_pending()
            agent.configure_file_prompt(True)
            agent.request("quit", {})
        self.assertEqual(events, [
            Change(1, "m"), TextChange(2, "m", "é"), FilesChange(3, "m", ("/a", "/b")),
            ImageChange(4, "m", "/image.png"), FormatsChange(5, "m", ("/text.html", "/text.txt")), FileRenamed(6),
            LogMessage("warning", "Texte presse-papiers ignoré (>4 Mio)")])


unittest.main(verbosity=2)
