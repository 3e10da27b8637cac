"""A client of TavelClipboardAgent for parent applications in Python 3.9 and later. README.md shows how to use it.

ClipboardAgent is for threads, AsyncClipboardAgent for asyncio. Both start the agent as a child process, and match its
replies to the commands by their request_id. No wait is without a limit, and every failure is an AgentError.
"""

from __future__ import annotations

import asyncio
import base64
import collections
import concurrent.futures
import contextlib
import dataclasses
import itertools
import json
import logging
import os
import queue
import subprocess
import threading
from typing import (Any, AsyncIterator, Awaitable, Callable, Deque, Dict, Generic, Iterator, Mapping, Optional,
                    Sequence, Tuple, TypeVar, Union)

__version__ = "0.1.0"

LONGEST_LINE = 64 * 1024 * 1024
"""Bytes. The agent's lines are far shorter; a program that writes a longer one is no agent."""

EVENTS_HELD = 64
"""So many events wait for a parent that does not take them; the oldest are dropped."""

_GRACE = 5.0  # seconds that an agent has to end by itself
_Path = Union[str, "os.PathLike[str]"]


# ---- events


@dataclasses.dataclass(frozen=True)
class Change:
    """The pasteboard has a new content. Of this class itself, it is the announcement: the description follows as one of
    the classes below with the same sequence, if the agent can describe the content."""

    sequence: int
    marker: str


@dataclasses.dataclass(frozen=True)
class TextChange(Change):
    text: str


@dataclasses.dataclass(frozen=True)
class FilesChange(Change):
    paths: Tuple[str, ...]


@dataclasses.dataclass(frozen=True)
class ImageChange(Change):
    """A PNG file, which the agent deletes when it reports the next picture, or ends."""

    path: str


@dataclasses.dataclass(frozen=True)
class FormatsChange(Change):
    """One file per format, called by it. The agent deletes them when it reports the next formats, or ends."""

    paths: Tuple[str, ...]


@dataclasses.dataclass(frozen=True)
class LogMessage:
    level: str
    message: str


@dataclasses.dataclass(frozen=True)
class FileRenamed:
    """A content was pasted as a file."""

    sequence: int


@dataclasses.dataclass(frozen=True)
class UnknownEvent:
    """An event of a later agent."""

    fields: Mapping[str, Any]


Event = Union[Change, LogMessage, FileRenamed, UnknownEvent]


@dataclasses.dataclass(frozen=True)
class Reply:
    request_id: int
    ok: bool
    reason: str
    sequence: int


# ---- errors


class AgentError(Exception):
    """The base of all errors of this module."""


class AgentNotFound(AgentError):
    """The agent's program is missing, or cannot be started."""


class CommandRefused(AgentError):
    """The agent refused a command, for a reason that can be shown to the user (in French)."""

    def __init__(self, command: str, reply: Reply) -> None:
        super().__init__(f"{command}: {reply.reason}")
        self.reason = reply.reason
        self.sequence = reply.sequence


class AgentTimeout(AgentError):
    """The agent did not reply in time. Whether it carries the command out later is unknown."""


class AgentEnded(AgentError):
    """The agent ended, was ended, or was never started. Its exit status is negative for a signal, None if unknown."""

    def __init__(self, message: str, exit_status: Optional[int] = None) -> None:
        super().__init__(message)
        self.exit_status = exit_status


class ProtocolError(AgentEnded):
    """The program wrote something that no agent writes, and was killed."""


# ---- the messages


def _typed(fields: Mapping[str, Any], key: str, kind: type) -> Any:
    value = fields.get(key)
    if type(value) is not kind:
        raise ValueError(f"no {kind.__name__} {key!r}")
    return value


def _paths(fields: Mapping[str, Any]) -> Tuple[str, ...]:
    paths = _typed(fields, "paths", list)
    if not all(type(path) is str for path in paths):
        raise ValueError("a path that is no string")
    return tuple(paths)


def _change(fields: Mapping[str, Any]) -> Event:
    sequence, marker = _typed(fields, "sequence", int), _typed(fields, "marker", str)
    if "kind" not in fields:
        encoded = _typed(fields, "text_b64", str)
        text = base64.b64decode(encoded + "=" * (-len(encoded) % 4), validate=True).decode()
        return TextChange(sequence, marker, text)
    kind = _typed(fields, "kind", str)
    if kind == "unsupported":
        return Change(sequence, marker)
    if kind == "files":
        return FilesChange(sequence, marker, _paths(fields))
    if kind == "image":
        (path,) = _paths(fields)
        return ImageChange(sequence, marker, path)
    if kind == "formats":
        return FormatsChange(sequence, marker, _paths(fields))
    return UnknownEvent(fields)


def _event(fields: Mapping[str, Any]) -> Event:
    if fields["event"] == "change":
        return _change(fields)
    if fields["event"] == "log":
        return LogMessage(_typed(fields, "level", str), _typed(fields, "message", str))
    if fields["event"] == "file_renamed":
        return FileRenamed(_typed(fields, "sequence", int))
    return UnknownEvent(fields)


def _message(line: bytes) -> Union[Event, Reply]:
    """Raises ValueError or RecursionError if the line is none of the agent's."""
    fields = json.loads(line.decode())
    if not isinstance(fields, dict):
        raise ValueError("no object")
    if "event" in fields:
        return _event(fields)
    return Reply(_typed(fields, "request_id", int), _typed(fields, "ok", bool), _typed(fields, "reason", str),
                 _typed(fields, "sequence", int))


def _encoded(data: bytes) -> str:
    return base64.b64encode(data).decode()


def _files(paths: Sequence[_Path], kind: str, marker: str, expected_sequence: Optional[int]) -> Dict[str, Any]:
    fields: Dict[str, Any] = {
        "kind": kind, "paths": [os.path.abspath(os.fspath(path)) for path in paths], "marker": marker}
    if expected_sequence is not None:
        fields["expected_sequence"] = expected_sequence
    return fields


def find_agent() -> str:
    """Returns the path in the environment variable TAVEL_CLIPBOARD_AGENT, or else where the package is installed, as
    pkg-config says. An application that brings its own agent passes the agent's path instead."""
    if path := os.environ.get("TAVEL_CLIPBOARD_AGENT"):
        return path
    try:
        found = subprocess.run(
            ["pkg-config", "--variable=agent", "tavel-clipboard-agent"], check=True, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=_GRACE)
    except (OSError, subprocess.SubprocessError):
        raise AgentNotFound("TAVEL_CLIPBOARD_AGENT is not set, and pkg-config does not know the agent") from None
    return os.fsdecode(found.stdout).rstrip("\n")


# ---- one run of the agent


class _Run:
    """From the start of a process to its end. One thread reads its output all the time. Another writes the commands, so
    that an agent that does not read holds up nobody."""

    def __init__(
            self, command: Sequence[str], environment: Optional[Mapping[str, str]], wake: Callable[[], None]) -> None:
        self._failure: Optional[str] = None  # why the reader gave the agent up
        self._wake = wake  # called on the reading thread after each event, and at the end
        self._changed = threading.Condition()  # guards what follows
        self._over = False
        self._events: Deque[Event] = collections.deque(maxlen=EVENTS_HELD)
        self._pending: Dict[int, concurrent.futures.Future[Reply]] = {}
        self._numbers = itertools.count(1)
        self._lines: queue.SimpleQueue[Optional[bytes]] = queue.SimpleQueue()
        try:
            self._process = subprocess.Popen(
                command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment)
        except (OSError, ValueError) as error:
            raise AgentNotFound(f"cannot start {command[0]!r}: {error}") from error
        self._reader = threading.Thread(target=self._read, name="tavel-clipboard-reader", daemon=True)
        self._writer = threading.Thread(target=self._write, name="tavel-clipboard-writer", daemon=True)
        try:
            self._reader.start()
            self._writer.start()
        except RuntimeError as error:
            self._process.kill()
            self._process.wait()
            raise AgentNotFound(f"cannot start a thread: {error}") from error

    @property
    def pid(self) -> int:
        return self._process.pid

    def ended(self) -> Optional[AgentEnded]:
        with self._changed:
            return self._end() if self._over else None

    def submit(self, command: str, fields: Mapping[str, Any]) -> concurrent.futures.Future[Reply]:
        """Sends a command. Whoever stops waiting for the reply cancels the future."""
        reply: concurrent.futures.Future[Reply] = concurrent.futures.Future()
        number = next(self._numbers)
        message = {**fields, "command": command, "request_id": number}
        # Half a surrogate pair cannot be encoded, which raises ValueError; the agent would drop such a line.
        line = json.dumps(message, ensure_ascii=False, allow_nan=False).encode() + b"\n"
        with self._changed:
            if self._over:
                raise self._end()
            self._pending[number] = reply
        reply.add_done_callback(lambda _: self._forget(number))
        self._lines.put(line)
        return reply

    def _forget(self, number: int) -> None:
        with self._changed:
            self._pending.pop(number, None)

    def take_event(self, timeout: Optional[float]) -> Optional[Event]:
        """Returns the next event, or None at the time-out or at the end. Without a time-out, it waits for the next."""
        with self._changed:
            self._changed.wait_for(lambda: self._events or self._over, timeout)
            return self._events.popleft() if self._events else None

    def end(self, timeout: float) -> None:
        """Lets the agent carry out what was sent and end; kills it at the time-out. Ends the threads."""
        self._lines.put(None)
        self._reader.join(timeout)
        if self._reader.is_alive():
            self._process.kill()
            self._reader.join(timeout)
        self._writer.join(timeout)
        self._finish()  # A process that the agent has left behind may hold its output open.

    # ---- on the threads

    def _write(self) -> None:
        assert self._process.stdin is not None
        while (line := self._lines.get()) is not None:
            try:
                self._process.stdin.write(line)
                self._process.stdin.flush()
            except OSError:  # An agent that reads nothing more is of no use, and the reader tells of its end.
                self._process.kill()
                break
        with contextlib.suppress(OSError):
            self._process.stdin.close()

    def _read(self) -> None:
        assert self._process.stdout is not None
        try:
            with self._process.stdout as output:
                while line := output.readline(LONGEST_LINE):
                    if line.endswith(b"\n"):
                        self._take(_message(line))
                    elif len(line) == LONGEST_LINE:
                        raise ValueError("too long a line")
                    # else a killed agent has left half a line
        except Exception as error:  # Whatever it is, nothing more can be understood.
            self._failure = f"{type(error).__name__}: {error}"
            self._process.kill()
        self._finish()

    def _take(self, message: Union[Event, Reply]) -> None:
        if not isinstance(message, Reply):
            with self._changed:
                self._events.append(message)
                self._changed.notify_all()
            self._wake()
            return
        with self._changed:
            waiting = self._pending.get(message.request_id)
        if waiting is not None and waiting.set_running_or_notify_cancel():
            waiting.set_result(message)

    def _finish(self) -> None:
        """Reaps the process and tells of the end, once."""
        with contextlib.suppress(subprocess.TimeoutExpired):
            self._process.wait(_GRACE)
        if self._process.returncode is None:  # It has closed its output without ending.
            self._process.kill()
            with contextlib.suppress(subprocess.TimeoutExpired):
                self._process.wait(_GRACE)
        with self._changed:
            if self._over:
                return
            self._over = True
            pending = list(self._pending.values())
            self._changed.notify_all()
        self._lines.put(None)
        for reply in pending:
            if reply.set_running_or_notify_cancel():
                reply.set_exception(self._end())
        self._wake()

    def _end(self) -> AgentEnded:
        status = self._process.returncode
        if self._failure is not None:
            return ProtocolError(f"the program is no agent, and was killed: {self._failure}", status)
        return AgentEnded(f"the agent has ended with status {status}", status)


# ---- the two interfaces

_Told = TypeVar("_Told")
_Answer = TypeVar("_Answer")  # the pasteboard's change count at the time of the reply, or what awaits it


class _Client(Generic[_Answer]):
    """The commands. Each raises CommandRefused, AgentTimeout or AgentEnded, and ValueError for text without UTF-8."""

    def __init__(self, program: Optional[_Path], arguments: Sequence[str], environment: Optional[Mapping[str, str]],
                 timeout: float) -> None:
        self._program, self._arguments, self._environment = program, arguments, environment
        self._timeout = timeout
        self._run: Optional[_Run] = None

    @property
    def ended(self) -> Optional[AgentEnded]:
        """How the agent ended, or None if it runs or was never started."""
        return None if self._run is None else self._run.ended()

    @property
    def running(self) -> bool:
        return self._run is not None and self._run.ended() is None

    @property
    def pid(self) -> Optional[int]:
        return None if self._run is None else self._run.pid

    def ping(self) -> _Answer:
        return self.request("ping", {})

    def write_text(self, text: str, marker: str = "") -> _Answer:
        return self.request("write_text", {"text_b64": _encoded(text.encode()), "marker": marker})

    def write_files(self, paths: Sequence[_Path], marker: str = "",
                    expected_sequence: Optional[int] = None) -> _Answer:
        return self.request("write_files", _files(paths, "files", marker, expected_sequence))

    def write_image(self, path: _Path, marker: str = "", expected_sequence: Optional[int] = None) -> _Answer:
        """Writes a PNG file's content unchanged."""
        return self.request("write_files", _files([path], "image", marker, expected_sequence))

    def write_formats(self, paths: Sequence[_Path], marker: str = "",
                      expected_sequence: Optional[int] = None) -> _Answer:
        """Writes the formats of one content. Each file is called by its format, as "text.html"."""
        return self.request("write_files", _files(paths, "formats", marker, expected_sequence))

    def write_image_data(self, data: bytes) -> _Answer:
        """Writes a picture as PNG. data is a file's content: PNG, JPEG, GIF, TIFF, WebP, BMP, HEIC or AVIF."""
        return self.request("write_image_data", {"image_b64": _encoded(data)})

    def discard_pending(self) -> _Answer:
        """The agent will not report the current content."""
        return self.request("discard_pending", {})

    def configure_file_prompt(self, rename_prompt: bool) -> _Answer:
        """Switches pasting into the file manager on or off."""
        return self.request("configure_file_prompt", {"rename_prompt": rename_prompt})

    def request(self, command: str, fields: Mapping[str, Any]) -> _Answer:
        """Sends any command."""
        raise NotImplementedError

    def _start(self, program: _Path, wake: Callable[[], None]) -> _Run:
        if self.running:
            raise AgentError("the agent is running")
        command = [os.fspath(program), "--parent-pid", str(os.getpid()), *self._arguments]
        self._run = _Run(command, self._environment, wake)
        return self._run

    def _current(self) -> _Run:
        if self._run is None:
            raise AgentEnded("the agent was not started")
        return self._run


def _sequence(command: str, reply: Reply) -> int:
    if not reply.ok:
        raise CommandRefused(command, reply)
    return reply.sequence


class ClipboardAgent(_Client[int]):
    """The agent for a program with threads, as a context or with start() and end(), which one thread calls at a time.
    Any thread may call everything else, also from on_event.

    With on_event, a thread of the client calls it with each event, and on_end when the agent ends by itself. Without,
    the client is an iterator over the events of one run, which waits for each and stops at the end of the agent."""

    def __init__(self, program: Optional[_Path] = None, *, arguments: Sequence[str] = (),
                 environment: Optional[Mapping[str, str]] = None, timeout: float = 30.0,
                 on_event: Optional[Callable[[Event], None]] = None,
                 on_end: Optional[Callable[[AgentEnded], None]] = None) -> None:
        """Without a program, start() looks for one with find_agent(). The arguments are added to the agent's own.
        Without an environment, the agent gets that of this process. The time-out is in seconds, for each reply."""
        super().__init__(program, arguments, environment, timeout)
        self._on_event, self._on_end = on_event, on_end
        self._caller: Optional[threading.Thread] = None
        self._ending = False

    def start(self) -> None:
        """Raises AgentNotFound."""
        run = self._start(find_agent() if self._program is None else self._program, lambda: None)
        self._ending = False
        if self._on_event is not None or self._on_end is not None:
            self._caller = threading.Thread(target=self._call, args=(run,), name="tavel-clipboard-events", daemon=True)
            self._caller.start()

    def end(self, timeout: float = _GRACE) -> None:
        """Lets the agent carry out what was sent, and end. Kills it after so many seconds. May be called repeatedly."""
        self._ending = True
        if self._run is not None:
            self._run.end(timeout)
        if self._caller is not None and self._caller is not threading.current_thread():
            self._caller.join(timeout)

    def restart(self, timeout: float = _GRACE) -> None:
        self.end(timeout)
        self.start()

    def next_event(self, timeout: Optional[float] = None) -> Optional[Event]:
        """Returns None after so many seconds, or at the end of the agent. Without a time-out, it waits for either."""
        return self._current().take_event(timeout)

    def request(self, command: str, fields: Mapping[str, Any]) -> int:
        reply = self._current().submit(command, fields)
        try:
            return _sequence(command, reply.result(self._timeout))
        except concurrent.futures.TimeoutError:
            raise AgentTimeout(f"{command}: no reply within {self._timeout} s") from None
        finally:
            reply.cancel()

    def __iter__(self) -> Iterator[Event]:
        while (event := self.next_event()) is not None:
            yield event

    def __enter__(self) -> ClipboardAgent:
        self.start()
        return self

    def __exit__(self, *_: object) -> None:
        self.end()

    def _call(self, run: _Run) -> None:
        while (event := run.take_event(None)) is not None:
            if self._on_event is not None:
                self._guarded(self._on_event, event)
        ended = run.ended()
        if self._on_end is not None and not self._ending and ended is not None:
            self._guarded(self._on_end, ended)

    @staticmethod
    def _guarded(function: Callable[[_Told], None], what: _Told) -> None:
        try:
            function(what)
        except Exception:  # The parent's mistake in one event costs no other.
            logging.getLogger(__name__).exception("an error in the parent's function")


class AsyncClipboardAgent(_Client[Awaitable[int]]):
    """The agent for asyncio, as an asynchronous context or with start() and end(). It belongs to the loop in which it
    was started. It is an asynchronous iterator over the events of one run."""

    def __init__(self, program: Optional[_Path] = None, *, arguments: Sequence[str] = (),
                 environment: Optional[Mapping[str, str]] = None, timeout: float = 30.0) -> None:
        """As for ClipboardAgent."""
        super().__init__(program, arguments, environment, timeout)
        self._news: Optional[asyncio.Event] = None

    async def start(self) -> None:
        """Raises AgentNotFound."""
        loop, news = asyncio.get_running_loop(), asyncio.Event()

        def wake() -> None:
            with contextlib.suppress(RuntimeError):  # the loop is closed
                loop.call_soon_threadsafe(news.set)

        program = self._program
        if program is None:
            program = await loop.run_in_executor(None, find_agent)
        self._start(program, wake)
        self._news = news

    async def end(self, timeout: float = _GRACE) -> None:
        """As for ClipboardAgent."""
        if self._run is not None:
            await asyncio.get_running_loop().run_in_executor(None, self._run.end, timeout)

    async def restart(self, timeout: float = _GRACE) -> None:
        await self.end(timeout)
        await self.start()

    async def next_event(self) -> Optional[Event]:
        """Waits for the next event. Returns None at the end of the agent."""
        run, news = self._current(), self._news
        while True:
            assert news is not None
            news.clear()
            over = run.ended() is not None
            event = run.take_event(0)
            if event is not None or over:
                return event
            await news.wait()

    async def request(self, command: str, fields: Mapping[str, Any]) -> int:
        reply = self._current().submit(command, fields)
        try:
            return _sequence(command, await asyncio.wait_for(asyncio.wrap_future(reply), self._timeout))
        except asyncio.TimeoutError:
            raise AgentTimeout(f"{command}: no reply within {self._timeout} s") from None

    async def __aiter__(self) -> AsyncIterator[Event]:
        while (event := await self.next_event()) is not None:
            yield event

    async def __aenter__(self) -> AsyncClipboardAgent:
        await self.start()
        return self

    async def __aexit__(self, *_: object) -> None:
        await self.end()
