"""The functions of applications.sh for Python: open, copy, paste as a person does it."""

import pathlib
import subprocess

from agent_session import Failure, shortened

FUNCTIONS = pathlib.Path(__file__).with_name("applications.sh")


def _run(script, function, arguments):
    command = ["bash", "-c", script, FUNCTIONS, function, *arguments]
    result = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, capture_output=True,
                            check=False)
    if result.returncode != 0:
        raise Failure(f"{function} {shortened(' '.join(map(str, arguments)), 200)} failed: " +
                      shortened(result.stderr.decode(errors="replace")))
    return result.stdout.decode()


def call(function, *arguments):
    """What the function prints. A failure of it is one here."""
    return _run('. "$0" && "$@"', function, arguments)


def open_window(function, *arguments):
    """The number of the window that the function opens."""
    return _run('. "$0" && "$@" && echo "$WINDOW"', function, arguments).strip()


def targets():
    """What the owner of the clipboard offers now."""
    return sorted(set(call("clipboard_targets").splitlines()))
