"""Directories, environments, X servers and compositors of one run, which keep the programs away from the user's own desktop."""

import contextlib
import os
import pathlib
import select
import shutil
import socket
import subprocess
import tempfile
import time

from agent_process import TIMEOUT

_NOBODY = 65534
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


@contextlib.contextmanager
def wayland_compositor():
    """Starts an invisible sway and gives its display: the absolute path of its socket."""
    with _sway("xwayland disable") as directory:
        yield str(_awaited(lambda: _listening_socket(directory)))


@contextlib.contextmanager
def xwayland():
    """Starts an invisible sway with an X server (Xwayland) and a keyboard, and gives the X server's display.
    Only programs of the same user can connect."""
    # wtype makes a keyboard that has the key V, and waits for half a minute before it presses the key. The new name
    # appears when the file is whole.
    with _sway(
            "xwayland force", "exec wtype -s 30000 v",
            "exec echo $DISPLAY > unfinished && mv unfinished display") as directory:
        yield _awaited(lambda: _content(directory / "display"))


@contextlib.contextmanager
def _sway(*configuration):
    with scratch_directory() as directory:
        as_user = as_no_root(directory)  # sway refuses to run as root, who can connect to it all the same
        file = directory / "configuration"
        file.write_text("\n".join(configuration) + "\n")
        file.chmod(0o644)
        environment = environment_in(
            directory, HOME=str(directory), WLR_BACKENDS="headless", WLR_RENDERER="pixman",
            WLR_LIBINPUT_NO_DEVICES="1")
        # If this process is killed, the compositor ends too.
        compositor = subprocess.Popen(
            ["setpriv", "--pdeathsig", "TERM", *as_user, "sway", "--config", str(file)], env=environment,
            cwd=directory, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            yield directory
        finally:
            compositor.terminate()
            compositor.wait(TIMEOUT)


def as_no_root(directory):
    """Returns the arguments with which setpriv runs a program as another user than root, who gets the directory."""
    if os.getuid() != 0:
        return []
    os.chown(directory, _NOBODY, _NOBODY)
    return ["--reuid", str(_NOBODY), "--regid", str(_NOBODY), "--clear-groups"]


def _awaited(found):
    """Returns what the function finds, once it finds something."""
    end = time.monotonic() + TIMEOUT
    while time.monotonic() < end:
        if thing := found():
            return thing
        time.sleep(0.01)
    raise RuntimeError("sway does not start. Are the packages sway and xwayland installed?")


def _content(file):
    return file.read_text().strip() if file.exists() else None


def _listening_socket(directory):
    """Returns the compositor's socket if it takes connections."""
    sockets = (path for path in directory.glob("wayland-*") if path.is_socket() and _takes_connections(path))
    return next(sockets, None)


def _takes_connections(path):
    with socket.socket(socket.AF_UNIX) as connection:
        return connection.connect_ex(str(path)) == 0
