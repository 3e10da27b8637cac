"""Tests of naming and pasting a file, one for each file manager. Each gets a running agent and an empty directory."""

import contextlib
import functools
import os
import pathlib
import signal
import subprocess
import time
import urllib.parse

from agent_session import Failure, expect, is_soon, wait_until
from application_tests import say, same
from desktop_applications import call, open_window
from pictures import SIGNATURE, make_random_png

HELD = 0.9  # seconds; the key repeats after 0.66
MARK = "com.brennic.generated-file"
PDF = b"%PDF-1.4\n1 0 obj <<>> endobj trailer <</Root 1 0 R>>\n%%EOF\n"
TEXT = "Liste de courses : déjà\n\npain\nlait\n"
PIXEL = (200, 30, 60)
SECONDS_OF_REST = 0.5  # longer than the agent's delay between a focus event and its query
MOST_USED_AT_REST = 0.01  # seconds of processor time; the smallest unit that the kernel counts
SECONDS_TO_SEE_NOTHING = 2  # several times what a panel or a pasted file needs to appear


def copy(target, data):
    """Copies as another program does, which replaces its earlier content."""
    subprocess.run(["xclip", "-selection", "clipboard", "-t", target], input=data, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, check=True)


def clipboard(target):
    return subprocess.run(["xclip", "-selection", "clipboard", "-o", "-t", target], capture_output=True,
                          check=True, timeout=30).stdout


def picture():
    return make_random_png(120, 90, PIXEL)


def processor_time(process):
    """Returns the processor time of all threads of the process, in seconds."""
    stat = pathlib.Path(f"/proc/{process}/stat").read_text()
    user, system = stat.rpartition(")")[2].split()[11:13]
    return (int(user) + int(system)) / os.sysconf("SC_CLK_TCK")


def pixels(path, channels):
    return subprocess.run(["convert", str(path), "-depth", "8", f"{channels}:-"], capture_output=True,
                          check=True).stdout


class Folder:
    """A file manager's window that shows a directory."""

    def __init__(self, manager, directory):
        directory.mkdir(exist_ok=True)
        self.directory = directory
        self.window = open_window("folder_open", manager, directory)
        self.process = int(call("xdotool", "getwindowpid", self.window))

    def names(self):
        return sorted(path.name for path in self.directory.iterdir())

    def focus(self):
        """Activates the window. Escape closes the dialog that a file manager may show after a useless shortcut."""
        for _ in range(5):
            call("xdotool", "windowactivate", self.window)
            if is_soon(lambda: call("xdotool", "getactivewindow").strip() == self.window):
                return
            call("xdotool", "key", "Escape")
        raise Failure("the folder's window cannot be activated")

    def rest(self):
        """Waits until the file manager is idle, after it has opened its window, pasted and drawn. A busy one may not
        report its focus in time, and then gets the shortcut itself."""
        wait_until(lambda: self._processor_time_used(SECONDS_OF_REST) <= MOST_USED_AT_REST,
                   "the file manager to come to rest")

    def _processor_time_used(self, seconds):
        before = processor_time(self.process)
        time.sleep(seconds)
        return processor_time(self.process) - before

    def press(self, *keys):
        self.focus()
        call("xdotool", "key", "--delay", "50", *keys)

    def press_paste(self, seconds=0.1):
        """Holds the shortcut; it repeats if held long enough. Returns the panels that opened before the release."""
        self.focus()
        self.rest()
        call("xdotool", "keydown", "ctrl", "keydown", "v")
        time.sleep(seconds)
        came = windows()
        call("xdotool", "keyup", "v", "keyup", "ctrl")
        return came

    def paste(self, seconds=0.1):
        """Presses the shortcut. Returns the panel's window number. On a busy machine the agent may learn of the focus too
        late. The file manager then gets the shortcut, and a person presses it again."""
        before = self.names()
        for _ in range(3):
            expect(not self.press_paste(seconds), "the panel came while the keys were held")
            if is_soon(lambda: windows() != [], 10):
                return open_window("panel_open")
            same("the folder after a shortcut that was passed on", self.names(), before)
            say("passed on: a shortcut that was decided too late")
        raise Failure("no panel came")

    def hold_and_paste(self):
        return self.paste(HELD)


def windows():
    run = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Nommer avant de coller$"],
                         capture_output=True, check=False)
    return run.stdout.split()


def name_it(panel, name):
    call("panel_name", panel, name)
    call("xdotool", "key", "Return")


def expect_no_panel(what):
    expect(not is_soon(lambda: windows() != [], SECONDS_TO_SEE_NOTHING), f"a panel came {what}")


def expect_nothing_new(folder, before, what):
    expect(not is_soon(lambda: folder.names() != before, SECONDS_TO_SEE_NOTHING),
           f"{what}: {folder.names()} instead of {before}")


def generated_file():
    """Returns the path of the generated file on the clipboard."""
    same("the mark", clipboard(MARK), b"1")
    url = clipboard("text/uri-list").decode().strip()
    return pathlib.Path(urllib.parse.unquote(urllib.parse.urlparse(url).path))


def paste_as(agent, folder, panel, name, full_name, data=None):
    """Enters the name and pastes. The pasted file must hold the generated file's bytes, and `data` if given."""
    before = folder.names()
    agent.made_file_by(lambda: name_it(panel, name))
    target = folder.directory / full_name
    wait_until(target.exists, f"{full_name} in the folder")
    source = generated_file()
    wait_until(lambda: target.stat().st_size == source.stat().st_size, "all of the file")
    same("the name of the generated file", source.name, full_name)
    same("its mode", oct(source.stat().st_mode & 0o777), oct(0o600))
    same("its directory's mode", oct(source.parent.stat().st_mode & 0o777), oct(0o700))
    same("the pasted file's mode", oct(target.stat().st_mode & 0o777), oct(0o600))
    same("what was pasted", target.read_bytes(), source.read_bytes())
    if data is not None:
        same("its bytes", target.read_bytes(), data)
    same("the folder", folder.names(), sorted([*before, full_name]))
    wait_until(lambda: not windows(), "the panel to go")
    agent.expect_silence("after a paste")
    say(f"pasted: {full_name}, {target.stat().st_size} bytes")
    return target


# ---- tests of every file manager


def pictures_text_and_documents(agent, folder):
    agent.copied_by(lambda: copy("image/png", picture()))
    folder.paste()
    call("xdotool", "key", "Escape")
    wait_until(lambda: not windows(), "the panel to go")
    expect_nothing_new(folder, [], "Escape pastes")
    agent.expect_silence("after Escape")

    panel = folder.hold_and_paste()
    target = paste_as(agent, folder, panel, "Ma photo", "Ma photo.jpg")
    expect(target.read_bytes().startswith(b"\xFF\xD8\xFF"), "the picture is no JPEG")
    same("its size in samples", len(pixels(target, "rgb")), 120 * 90 * 3)

    # The content beside the file becomes another file.
    panel = folder.hold_and_paste()
    paste_as(agent, folder, panel, "Encore", "Encore.jpg")

    agent.copied_by(lambda: copy("application/pdf", PDF))
    panel = folder.hold_and_paste()
    paste_as(agent, folder, panel, "Rapport", "Rapport.pdf", PDF)
    agent.copied_by(lambda: copy("UTF8_STRING", TEXT.encode()))
    folder.hold_and_paste()
    # The proposed name is the first line without the characters that a name may not contain.
    agent.made_file_by(lambda: call("xdotool", "key", "Return"))
    target = folder.directory / "Liste de courses  déjà.txt"
    wait_until(target.exists, "the text's file")
    wait_until(lambda: target.stat().st_size == len(TEXT.encode()), "all of the text")
    same("the text", target.read_bytes(), TEXT.encode())
    agent.expect_silence("after a text")


def invalid_name(agent, folder):
    agent.copied_by(lambda: copy("UTF8_STRING", b"bonjour"))
    before = folder.names()
    panel = folder.hold_and_paste()
    call("panel_name", panel, "CON")
    fresh = call("window_picture", panel)
    call("xdotool", "key", "Return")
    wait_until(lambda: call("window_picture", panel) != fresh, "the hint")
    expect(windows() != [], "the panel went with an invalid name")
    expect_nothing_new(folder, before, "an invalid name pastes")
    agent.expect_silence("after an invalid name")
    paste_as(agent, folder, panel, "photo.png", "photo.png.txt", b"bonjour")


def clipboard_changed_meanwhile(agent, folder):
    before = folder.names()
    panel = folder.hold_and_paste()
    agent.copied_by(lambda: copy("UTF8_STRING", b"autre chose"))
    name_it(panel, "trop tard")
    wait_until(lambda: not windows(), "the panel to go")
    expect_nothing_new(folder, before, "what was copied meanwhile is pasted")
    agent.expect_silence("after a change")


def in_a_text_field(agent, folder, *, path_keys=("ctrl+l",)):
    """The shortcut passes in the field for a path."""
    other = folder.directory.with_name("autre-dossier")
    other.mkdir()
    agent.copied_by(lambda: copy("UTF8_STRING", str(other).encode()))

    def is_there():
        return other.name in call("window_title", folder.window)

    for _ in range(3):
        folder.press(*path_keys)
        time.sleep(1.5)  # nothing announces the field
        folder.press("ctrl+a")
        folder.press_paste()
        expect_no_panel("in a text field")
        call("xdotool", "key", "Return")
        if is_soon(is_there):
            break
    expect(is_there(), "the path was not pasted into the field")
    say("passed: the shortcut in a text field")
    agent.expect_silence("after pasting a path")
    folder.press("alt+Left")
    wait_until(lambda: folder.directory.name in call("window_title", folder.window), "the folder from before")


def copied_file(agent, folder, copy_it):
    """The file manager itself pastes a copied file."""
    directory = folder.directory.with_name("source")
    directory.mkdir()
    file = directory / "un fichier.txt"
    file.write_text("de la source")
    same("the paths copied", agent.files_copied_by(lambda: copy_it(file)), [str(file)])
    target = folder.directory / file.name
    for _ in range(3):
        folder.press_paste()
        if is_soon(target.exists):
            break
    expect(target.exists(), "the copied file was not pasted")
    same("the copied file", target.read_text(), "de la source")
    expect_no_panel("for a copied file")
    say("passed: a copied file")


def with_the_tool(agent):
    return lambda file: subprocess.run([agent.programs / "tavel-pasteboard", "copy-files", file], check=True)


def with_thunar(file):
    window = open_window("folder_open", "thunar", file.parent)
    call("copy_with", window, "ctrl+a", "ctrl+c")


def every_manager(manager, agent, directory):
    folder = Folder(manager, directory / "dossier")
    agent.prompt_for_names(True)
    pictures_text_and_documents(agent, folder)
    invalid_name(agent, folder)
    clipboard_changed_meanwhile(agent, folder)
    in_a_text_field(agent, folder)
    copied_file(agent, folder, with_thunar if manager == "thunar" else with_the_tool(agent))
    return folder


# ---- tests of one file manager


def alpha_stays(agent, folder):
    """A picture with an alpha channel becomes a PNG."""
    made = subprocess.run(["convert", "-size", "40x30", "xc:rgba(10,200,30,0.5)", "PNG32:-"], capture_output=True,
                          check=True).stdout
    agent.copied_by(lambda: copy("image/png", made))
    target = paste_as(agent, folder, folder.hold_and_paste(), "transparent", "transparent.png")
    expect(target.read_bytes().startswith(SIGNATURE), "the picture is no PNG")
    same("its first pixel", tuple(pixels(target, "rgba")[:4]), (10, 200, 30, 127))


def renaming(agent, folder):
    """The shortcut passes in the field for a file's new name."""
    old = folder.directory / "un fichier.txt"
    new = folder.directory / "un autre nom"
    agent.copied_by(lambda: copy("UTF8_STRING", new.name.encode()))
    for other in folder.directory.iterdir():
        if other != old:
            other.unlink()
    for _ in range(3):
        folder.press("ctrl+a", "F2")
        time.sleep(1.5)  # nothing announces the field
        call("xdotool", "key", "ctrl+a")
        call("xdotool", "keydown", "ctrl", "keydown", "v", "sleep", "0.1", "keyup", "v", "keyup", "ctrl")
        expect_no_panel("while renaming")
        call("xdotool", "key", "Return")
        if is_soon(new.exists):
            break
    expect(new.exists(), "the new name was not pasted")
    say("passed: the shortcut while renaming")


def switched_off_meanwhile(agent, folder):
    agent.copied_by(lambda: copy("UTF8_STRING", b"bonjour"))
    before = folder.names()
    folder.paste()
    agent.prompt_for_names(False)
    wait_until(lambda: not windows(), "the panel to go")
    folder.press_paste(HELD)
    expect_no_panel("while it is switched off")
    expect_nothing_new(folder, before, "what was abandoned is pasted")
    agent.expect_silence("after switching off")
    agent.prompt_for_names(True)
    paste_as(agent, folder, folder.paste(), "de nouveau", "de nouveau.txt", b"bonjour")


@contextlib.contextmanager
def terminal(directory):
    """Gives the number of the terminal's window and the file that records its input."""
    ready, taken = directory / "ready", directory / "taken"
    window = open_window("xterm_open", f"stty raw -echo; touch '{ready}'; exec cat >'{taken}'")
    wait_until(ready.exists, "the program in the terminal")
    yield window, taken
    call("xdotool", "windowclose", window)


def other_programs(agent, folder, directory):
    """The shortcut passes in every other program."""
    agent.copied_by(lambda: copy("image/png", picture()))
    with terminal(directory) as (window, taken):
        for count in range(1, 6):
            call("press", window, "ctrl+v")
            wait_until(lambda: taken.read_bytes() == b"\x16" * count, f"{count} times ^V in the terminal")
            expect(not windows(), "a panel came for a terminal")
    expect_no_panel("for a terminal")
    agent.expect_silence("after another program's shortcut")
    say("passed: ^V in a terminal")
    folder.focus()


def stopped_manager(agent, folder, directory):
    """A file manager that hangs does not block the keyboard, and it gets its key."""
    with terminal(directory) as (window, taken):
        folder.focus()
        os.kill(folder.process, signal.SIGSTOP)
        try:
            folder.press_paste()
            expect_no_panel("for a file manager that hangs")
            call("xdotool", "windowactivate", window)
            wait_until(lambda: call("xdotool", "getactivewindow").strip() == window, "the terminal in front")
            call("xdotool", "key", "x")
            wait_until(lambda: taken.read_bytes() == b"x", "the letter in the terminal")
            agent.expect_silence("while the file manager hangs")
        finally:
            os.kill(folder.process, signal.SIGCONT)
    say("passed: the key of a file manager that hangs")
    expect_no_panel("for a file manager that hung")
    panel = folder.paste()
    call("xdotool", "key", "Escape")
    wait_until(lambda: not windows(), "the panel to go")
    expect(panel, "no panel")


def thunar(agent, directory):
    folder = every_manager("thunar", agent, directory)
    renaming(agent, folder)
    alpha_stays(agent, folder)
    switched_off_meanwhile(agent, folder)
    other_programs(agent, folder, directory)
    for name in ("ready", "taken"):
        (directory / name).unlink()
    stopped_manager(agent, folder, directory)


def other_manager(manager):
    return functools.partial(every_manager, manager)


ALL = {"paste-thunar": thunar} | {
    f"paste-{manager}": other_manager(manager) for manager in ("caja", "nemo", "nautilus", "pcmanfm")}
