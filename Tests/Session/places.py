"""The environments in which the tests run, and their differences."""

import contextlib
import os
import pathlib
import subprocess
import sys
import unicodedata
import uuid

from scratch_places import environment_in, scratch_directory, wayland_compositor, x_server


class Place:
    """The tests put their files into `directory`. The programs run with `environment` and put their files into
    `temporary_directory`. `counted_once` says whether a copy appears as one change; elsewhere the agent may see the
    cleared pasteboard before the content."""

    counted_once = True
    html_mark = b"\xef\xbb\xbf"  # precedes the HTML that the agent writes

    def __init__(self, directory):
        self.directory = directory
        self.temporary_directory = directory / "temporary"
        self.temporary_directory.mkdir()
        self.environment = environment_in(directory, TMPDIR=str(self.temporary_directory))

    @contextlib.contextmanager
    def pasteboard(self):
        """Gives a pasteboard that nobody else uses: its name, or None for the general one, and the environment of the
        programs that use it."""
        yield f"tavel-test-{uuid.uuid4()}", self.environment

    def check(self, agent):
        """Raises an AssertionError if the agent with that process identifier uses another kind of pasteboard."""

    def export_directories(self):
        return set(self.temporary_directory.glob("tavel-clipboard-*"))

    @staticmethod
    def comparable_paths(paths):
        """Returns the paths in the form in which they are compared after they were on the pasteboard."""
        return paths


class X11(Place):
    html_mark = b""  # browsers on X11 would show it as a character

    def __init__(self, directory, display):
        super().__init__(directory)
        self.environment["DISPLAY"] = display


class Wayland(Place):
    html_mark = b""

    @contextlib.contextmanager
    def pasteboard(self):
        """A compositor has one clipboard, so each test has a compositor."""
        with wayland_compositor() as display:
            yield None, self.environment | {"WAYLAND_DISPLAY": display}

    def check(self, agent):
        """Without the module, the agent would use its store, on which the tests pass as well."""
        assert "tavel-wayland" in pathlib.Path(f"/proc/{agent}/maps").read_text()


class Mac(Place):
    counted_once = False

    def __init__(self, directory):
        super().__init__(directory)
        self.environment = dict(os.environ)
        found = subprocess.run(["getconf", "DARWIN_USER_TEMP_DIR"], check=True, stdout=subprocess.PIPE)
        self.temporary_directory = pathlib.Path(os.fsdecode(found.stdout).rstrip("\n"))

    @staticmethod
    def comparable_paths(paths):
        """macOS may decompose accents in file names; the names still denote the same files."""
        return [unicodedata.normalize("NFC", path) for path in paths]


@contextlib.contextmanager
def _headless():
    with scratch_directory() as directory:
        yield Place(directory)


@contextlib.contextmanager
def _x11():
    with scratch_directory() as directory, x_server() as display:
        yield X11(directory, display)


@contextlib.contextmanager
def _wayland():
    with scratch_directory() as directory:
        yield Wayland(directory)


@contextlib.contextmanager
def _mac():
    with scratch_directory() as directory:
        yield Mac(directory)


ALL = {"mac": _mac} if sys.platform == "darwin" else {
    "headless": _headless, "x11": _x11, "wayland": _wayland}
