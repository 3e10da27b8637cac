"""Asks shells what they offer for a command line."""

import os
import pty
import re
import select
import signal
import subprocess
import time

TIMEOUT = 60


def environment_in(directory, **more):
    return {"PATH": os.environ["PATH"], "HOME": str(directory), "LC_ALL": "C.UTF-8"} | more


class Shell:
    """Has `home` to itself and works in its folder "work". Reads the files of the folder `completions`."""

    def __init__(self, completions, home):
        self.completions, self.home = completions, home

    def output_of(self, *arguments):
        environment = environment_in(self.home)
        run = subprocess.run(
            arguments, capture_output=True, text=True, timeout=TIMEOUT, cwd=self.home / "work", env=environment
        )
        assert run.returncode == 0 and not run.stderr, f"{arguments[0]} says: {run.stderr}"
        return run.stdout


class Bash(Shell):
    SCRIPT = """
        source "$1/$2.bash"
        shift
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
        "$(complete -p "$1" | sed 's/.* -F \\([^ ]*\\) .*/\\1/')" "$1"
        printf '%s\\n' "${COMPREPLY[@]}"
    """

    def offers(self, line):
        # Readline takes an equals sign for a word of its own, and starts no empty word behind it.
        words = re.sub(" ?= ?", " = ", line).removesuffix(" " if line.endswith("=") else "").split(" ")
        output = self.output_of("bash", "-c", self.SCRIPT, "bash", str(self.completions), *words)
        return set(output.splitlines()) - {""}


class Fish(Shell):
    def offers(self, line):
        script = f"source $argv[1]/{line.split()[0]}.fish; complete -C $argv[2]"
        output = self.output_of("fish", "--no-config", "-c", script, str(self.completions), line)
        # It shows the whole word, also what stands before the equals sign, and a description behind a tab.
        before, equals, _ = line.split(" ")[-1].partition("=")
        return {found.split("\t")[0].removeprefix(before + equals if equals else "") for found in output.splitlines()}


class Zsh(Shell):
    """Types into a shell on a pseudo-terminal, since zsh completes nowhere else."""

    SETUP = """
        fpath=($COMPLETIONS $fpath)
        autoload -U compinit && compinit -u -d $HOME/dump
        typeset -a offered
        compadd() {
            local -a found
            # With these options it only looks for what would match.
            [[ ${(M)@:#-[OAD]*} ]] || { builtin compadd -O found "$@"; offered+=($found); }
            builtin compadd "$@"
        }
        record() {
            offered=()
            _main_complete
            print -rl -- ${(Q)offered} >$HOME/unfinished
            mv $HOME/unfinished $HOME/offered
        }
        zle -C record list-choices record
        bindkey '^D' record
        zle-line-init() { : >$HOME/ready }
        zle -N zle-line-init
        cd $HOME/work
    """

    def offers(self, line):
        (self.home / ".zshrc").write_text(self.SETUP)
        for sign in ["ready", "offered"]:
            (self.home / sign).unlink(missing_ok=True)
        child, terminal = pty.fork()
        if child == 0:
            environment = environment_in(self.home, COMPLETIONS=str(self.completions), TERM="vt100")
            os.execvpe("zsh", ["zsh", "--no-globalrcs", "-i"], environment)
        try:
            self._wait_for("ready", terminal)
            os.write(terminal, line.encode() + b"\x04")
            return set(self._wait_for("offered", terminal).splitlines()) - {""}
        finally:
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)
            os.close(terminal)

    def _wait_for(self, name, terminal):
        """The content of the file, which the shell makes. Reads meanwhile what the shell shows."""
        shown, deadline = b"", time.monotonic() + TIMEOUT
        while not (self.home / name).exists():
            assert time.monotonic() < deadline, f"zsh has no file {name!r}, and shows {shown!r}"
            if select.select([terminal], [], [], 0.01)[0]:
                shown += os.read(terminal, 4096)
        return (self.home / name).read_text()


SHELLS = {"bash": Bash, "fish": Fish, "zsh": Zsh}
