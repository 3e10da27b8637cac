"""The environments in which the tests run, and their differences."""

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

PATIENCE = 60  # seconds; a busy machine needs far less

# The programs must not see the user's own desktop.
_DESKTOP_VARIABLES = ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS")


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
        self.environment = dict(
            os.environ, XDG_RUNTIME_DIR=str(directory), TMPDIR=str(self.temporary_directory))
        for variable in _DESKTOP_VARIABLES:
            self.environment.pop(variable, None)

    def export_directories(self):
        return set(self.temporary_directory.glob("tavel-clipboard-*"))

    @staticmethod
    def written_paths(paths):
        """Returns the paths in the form in which they are compared after the agent has written them."""
        return paths


class X11(Place):
    html_mark = b""  # browsers on X11 would show it as a character

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
        """macOS may decompose accents in file names; the names still denote the same files."""
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
    """Starts an invisible X server and gives its display."""
    reading, writing = os.pipe()
    # If this process is killed, the server ends too.
    server = subprocess.Popen(
        ["setpriv", "--pdeathsig", "TERM", "Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x800x24",
         "-nolisten", "tcp", "-noreset"],
        pass_fds=[writing], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        os.close(writing)
        yield ":" + _first_line(reading)
    finally:
        os.close(reading)
        server.terminate()  # SIGTERM lets it remove its files
        server.wait(PATIENCE)


@contextlib.contextmanager
def _directory():
    # Other programs may resolve links in paths, so the tests use the resolved path.
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
