"""Other programs on the agent's pasteboard. Each client is a thread that makes them copy, flood, hang and die."""

import subprocess
import threading
import time

from agent_process import TIMEOUT

SIZES = (0, 10, 1000, 300_000, 4 << 20, (4 << 20) + 1)  # bytes of a text; the last one is too large


class Client(threading.Thread):
    """Acts until the time `end`. An error ends it, and `finish` raises it again."""

    def __init__(self, directory, environment, chance, end):
        super().__init__(daemon=True)
        self.directory, self.environment, self.chance = directory, environment, chance
        self.actions = 0
        self._end, self._error = end, None

    def run(self):
        try:
            while time.monotonic() < self._end:
                self.act()
                self.actions += 1
                time.sleep(self.chance.uniform(0, 0.3))
        except Exception as error:  # shown by the thread that started this one
            self._error = error
        finally:
            self.leave()

    def finish(self):
        self.join(2 * TIMEOUT)
        assert not self.is_alive(), "a client hangs"
        if self._error:
            raise self._error

    def act(self):
        raise NotImplementedError

    def leave(self):
        """Ends the programs."""


class ServerClient(Client):
    """A program on the X server, which is started again when it has died."""

    COMMANDS = (*(f"copy {size}" for size in SIZES), "hang", "halve", "let-go", "paste", "paste", "flood 5000", "die")

    program = None

    def act(self):
        if self.program is None:
            self.program = subprocess.Popen(
                [self.directory / "soak-peer", self.environment["DISPLAY"]], env=self.environment,
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        command = self.chance.choice(self.COMMANDS)
        self.program.stdin.write(command + "\n")
        self.program.stdin.flush()
        answer = self.program.stdout.readline()
        assert answer == ("" if command == "die" else "done\n"), f"{command}: {answer}"
        if command == "die":
            self.leave()

    def leave(self):
        if self.program is not None:
            self.program.kill()
            self.program.wait(TIMEOUT)
            self.program.stdin.close()
            self.program.stdout.close()
            self.program = None


class StoreClient(Client):
    """Programs on the embedded pasteboards, each of which does one thing."""

    def _start(self, *arguments):
        return subprocess.Popen(
            [self.directory / "tavel-pasteboard", *arguments], env=self.environment, stdin=subprocess.PIPE,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def _run(self, *arguments, content=b""):
        program = self._start(*arguments)
        program.communicate(content, TIMEOUT)

    def act(self):
        self.chance.choice((self.copy, self.copy, self.paste, self.flood, self.hang, self.die))()

    def copy(self):
        self._run("copy", content=b"c" * self.chance.choice(SIZES))

    def paste(self):
        self._run("paste")

    def flood(self):
        for number in range(50):
            self._run("copy", content=b"%d" % number)

    def hang(self):
        """Never gets what it is to copy."""
        program = self._start("copy")
        time.sleep(self.chance.uniform(0, 1))
        program.kill()
        program.communicate(timeout=TIMEOUT)

    def die(self):
        """Is killed at any moment."""
        program = self._start("copy")
        program.stdin.write(b"d" * 60_000)  # fits into the pipe
        program.stdin.close()
        time.sleep(self.chance.uniform(0, 0.02))
        program.kill()
        program.wait(TIMEOUT)
