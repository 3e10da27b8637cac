"""The lines between the agents of the tests and their parents, in files: see RecordedLines.h."""

import os
import re
import sys
import tempfile
import threading

DIRECTORY_VARIABLE = "TAVEL_TEST_LINES_DIRECTORY"

_WHOLE_LINE = 64 * 1024
_LONGEST = 4 * 1024 * 1024
_KEPT = 1024  # bytes at both ends of a run
_RUN = re.compile(rb"(?:[A-Za-z0-9+/=]+|(?:\\/)+)+")


def _condensed_run(match):
    run = match[0]
    if len(run) <= 8 * 1024:
        return run
    begin, end = _KEPT, len(run) - _KEPT
    begin += run[begin - 1:begin + 1] == b"\\/"
    end += run[end - 1:end + 1] == b"\\/"
    omitted = end - begin - run.count(b"\\", begin, end)
    while omitted % 4:
        omitted -= 1
        end -= 2 if run[end - 2:end] == b"\\/" else 1
    return run[:begin] + b"\x01%d\x01" % omitted + run[end:]


class RecordedLines:
    """The lines of one agent, in a new file of the directory that the environment variable names. Does nothing without
    it. Any thread may call it."""

    def __init__(self):
        self._file = None
        self._begun_line = b""
        self._lock = threading.Lock()
        directory = os.environ.get(DIRECTORY_VARIABLE)
        if directory:
            os.makedirs(directory, exist_ok=True)
            self._file = tempfile.NamedTemporaryFile(dir=directory, suffix=".lines", buffering=0, delete=False)
            self._file.write(f"# {' '.join(os.path.basename(word) for word in sys.argv)}\n".encode())

    def sent(self, data):
        """The bytes may begin and end anywhere in a line."""
        if self._file:
            *lines, self._begun_line = (self._begun_line + data).split(b"\n")
            for line in lines:
                self._write(b"> ", line)

    def end_input(self):
        if self._file and self._begun_line:
            self._write(b"> ", self._begun_line)
            self._begun_line = b""

    def received(self, line):
        if self._file and line.endswith(b"\n"):
            self._write(b"< ", line[:-1])

    def close(self):
        if self._file:
            self._file.close()

    def _write(self, direction, line):
        if len(line) > _WHOLE_LINE:
            line = _RUN.sub(_condensed_run, line)
        if len(line) > _LONGEST:
            line = line[:_KEPT] + b"\x02"
        with self._lock:
            self._file.write(direction + line + b"\n")
