"""What the tools' --help tells."""

import re
import subprocess


class Help:
    """The help of a program, or of one of its commands."""

    def __init__(self, program, command=None):
        arguments = [program] + ([command] if command else []) + ["--help"]
        run = subprocess.run(arguments, capture_output=True, text=True, check=True, timeout=30)
        self.text = run.stdout

    def options(self):
        """With their short names."""
        chapter = self._chapter("Options:")
        return {name for line in re.findall(r"^  (-\S+)", chapter, re.MULTILINE) for name in line.split(",")}

    def commands(self):
        return set(re.findall(r"^  ([a-z][a-z-]*)", self._chapter("Subcommands:"), re.MULTILINE))

    def session_commands(self):
        return set(re.findall(r"^([a-z][a-z-]*)", self._chapter("Commands, one per line:"), re.MULTILINE))

    def types(self):
        """Short names, with their identifiers."""
        return dict(re.findall(r"^  (\S+) +(\S+)$", self._chapter("Short names for types"), re.MULTILINE))

    def _chapter(self, title):
        found = re.search(rf"^{re.escape(title)}.*\n((?:.+\n)*)", self.text, re.MULTILINE)
        return found[1] if found else ""
