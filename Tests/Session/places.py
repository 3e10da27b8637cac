"""Where a run of the tests takes place, and what differs there."""

import contextlib
import os
import pathlib
import select
import shutil
import subprocess
import sys
import tempfile
import time
import unicodedata

PATIENCE = 60  # seconds, far beyond what a busy machine needs

# What the user's own desktop says must not reach the programs.
_DESKTOP_VARIABLES = ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS")


class Place:
    """`directory` is for the tests' files, `temporary_directory` is where programs put theirs, `environment` is
    the programs', and `counted_once` says whether a new content moves the change count in one step for whoever
    watches: elsewhere the cleared pasteboard may be seen before the content."""

    counted_once = True
    html_mark = b"\xef\xbb\xbf"  # what stands on the pasteboard before the HTML that the agent wrote

    def __init__(self, directory):
        self.directory = directory
        self.temporary_directory = directory / "temporary"
        self.temporary_directory.mkdir()
        self.environment = dict(
            os.environ, XDG_RUNTIME_DIR=str(directory), TMPDIR=str(self.temporary_directory))
        for variable in _DESKTOP_VARIABLES:
            self.environment.pop(variable, None)

    def export_directories(self):
        return set(self.temporary_directory.glob("tavel-clipboard-*"))

    @staticmethod
    def written_paths(paths):
        """What the paths are on the pasteboard, when the agent has written them."""
        return paths


class X11(Place):
    html_mark = b""  # there, browsers would take it for a character

    def __init__(self, directory, display):
        super().__init__(directory)
        self.environment["DISPLAY"] = display


class Mac(Place):
    counted_once = False

    def __init__(self, directory):
        super().__init__(directory)
        self.environment = dict(os.environ)
        found = subprocess.run(["getconf", "DARWIN_USER_TEMP_DIR"], check=True, stdout=subprocess.PIPE)
        self.temporary_directory = pathlib.Path(os.fsdecode(found.stdout).rstrip("\n"))

    @staticmethod
    def written_paths(paths):
        """The system may take accents apart in the names that it is given: the files are the same ones."""
        return [unicodedata.normalize("NFC", path) for path in paths]


def _first_line(descriptor):
    end, line = time.monotonic() + PATIENCE, b""
    while not line.endswith(b"\n"):
        ready, _, _ = select.select([descriptor], [], [], max(end - time.monotonic(), 0))
        received = os.read(descriptor, 1) if ready else b""
        if not received:
            raise RuntimeError("Xvfb does not start. Is the package xvfb installed?")
        line += received
    return line[:-1].decode()


@contextlib.contextmanager
def _x_server():
    """The display of a server that nobody sees."""
    reading, writing = os.pipe()
    # Should this process be killed, its server goes too.
    server = subprocess.Popen(
        ["setpriv", "--pdeathsig", "TERM", "Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x800x24",
         "-nolisten", "tcp", "-noreset"],
        pass_fds=[writing], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        os.close(writing)
        yield ":" + _first_line(reading)
    finally:
        os.close(reading)
        server.terminate()  # and not killed: it removes its files
        server.wait(PATIENCE)


@contextlib.contextmanager
def _directory():
    # The path as the system resolves it, which is what other programs may make of it.
    directory = pathlib.Path(tempfile.mkdtemp(prefix="session-test-")).resolve()
    try:
        yield directory
    finally:
        shutil.rmtree(directory, ignore_errors=True)


@contextlib.contextmanager
def _headless():
    with _directory() as directory:
        yield Place(directory)


@contextlib.contextmanager
def _x11():
    with _directory() as directory, _x_server() as display:
        yield X11(directory, display)


@contextlib.contextmanager
def _mac():
    with _directory() as directory:
        yield Mac(directory)


ALL = {"mac": _mac} if sys.platform == "darwin" else {"headless": _headless, "x11": _x11}
