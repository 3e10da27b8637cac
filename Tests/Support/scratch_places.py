"""Directories, environments and X servers of one run, which keep the programs away from the user's own desktop."""

import contextlib
import os
import pathlib
import select
import shutil
import subprocess
import tempfile
import time

from agent_process import TIMEOUT

_DESKTOP_VARIABLES = ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS")


@contextlib.contextmanager
def scratch_directory():
    """Gives a new directory and removes it at the end."""
    # Other programs may resolve links in paths, so the tests use the resolved path.
    directory = pathlib.Path(tempfile.mkdtemp(prefix="tavel-test-")).resolve()
    try:
        yield directory
    finally:
        shutil.rmtree(directory, ignore_errors=True)


def environment_in(directory, **variables):
    """Returns an environment in which programs put their files into the directory and see no desktop. The variables
    are added, or replace those of the same name."""
    own = {name: value for name, value in os.environ.items() if name not in _DESKTOP_VARIABLES}
    return own | {"XDG_RUNTIME_DIR": str(directory), "TMPDIR": str(directory)} | variables


def enter_environment(environment):
    """Makes it the environment of this process and of the programs that it starts from now on."""
    os.environ.clear()
    os.environ.update(environment)


def _first_line(descriptor):
    end, line = time.monotonic() + TIMEOUT, b""
    while not line.endswith(b"\n"):
        ready, _, _ = select.select([descriptor], [], [], max(end - time.monotonic(), 0))
        received = os.read(descriptor, 1) if ready else b""
        if not received:
            raise RuntimeError("Xvfb does not start. Is the package xvfb installed?")
        line += received
    return line[:-1].decode()


@contextlib.contextmanager
def x_server():
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
        server.wait(TIMEOUT)
