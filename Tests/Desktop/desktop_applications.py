"""The functions of applications.sh for Python: open, copy and paste as a person does."""

import pathlib
import subprocess

from agent_process import shortened
from agent_session import Failure

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
    """Returns what the function prints. Raises Failure if it fails."""
    return _run('. "$0" && "$@"', function, arguments)


def open_window(function, *arguments):
    """Returns the number of the window that the function opens."""
    return _run('. "$0" && "$@" && echo "$WINDOW"', function, arguments).strip()


def targets():
    """Returns the targets that the clipboard's owner offers."""
    return sorted(set(call("clipboard_targets").splitlines()))
