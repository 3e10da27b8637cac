"""The tests of each application. Each function gets a running agent and an empty directory, and prints its results."""

import re
import zipfile

from agent_process import shortened
from agent_session import Failure, expect, is_soon, wait_until
from desktop_applications import call, open_window, targets
from pictures import make_random_png, read_png

TEXT = "Voilà, déjà copié : 100 % « à la main » — ½ € 日本語 😀"
LINES = f"{TEXT}\n\n\tun deuxième paragraphe\n"
LONG = "".join(f"ligne {number} : {TEXT}\n" for number in range(12000))  # 1 MB, enough for an incremental transfer
HTML = "<p>Bonjour <b>tout le monde</b> : déjà 5 € 日本</p>"  # declares no encoding, so a wrong guess shows
RTF = r"{\rtf1\ansi\ansicpg1252 Bonjour {\b tout le monde} : d\'e9j\'e0 5 \'80 \u26085?\u26412?\par}"
PLAIN = "Bonjour tout le monde : déjà 5 € 日本"
PIXEL = (200, 30, 60)
NAMES = ["a blank.txt", "100%25 & été #1?.txt", "it's \"quoted\";.txt", "a directory"]


def say(what):
    print(what, flush=True)


def same(name, got, wanted):
    if got != wanted:
        raise Failure(f"{name}: {shortened(repr(got))} instead of {shortened(repr(wanted))}")


def copied(what, result):
    """Prints the targets that an application offers and what the agent reported."""
    say(f"copied: {what}\n  offered: {', '.join(shortened(target, 40) for target in targets())}")
    if isinstance(result, dict):
        for name, content in sorted(result.items()):
            say(f"  {name}, {len(content)} bytes: {shortened(repr(content), 60)}")
    else:
        say(f"  {shortened(repr(result), 200)}")
    return result


def pasted(what, result):
    say(f"pasted: {what}\n  {shortened(repr(result), 200)}")


def press_until(condition, what, *presses):
    """Presses the keys until the condition holds, because a busy application, or one that has just opened its window,
    may lose some. Each press is a function of applications.sh with its arguments."""
    for _ in range(5):
        for press in presses:
            call(*press)
        if is_soon(condition):
            return
    raise Failure(f"this did not come: {what}")


def formats_in(directory):
    """The same content in three formats, as arguments for write_files."""
    contents = {"text.html": HTML, "text.rtf": RTF, "text.txt": PLAIN}
    for name, content in contents.items():
        (directory / name).write_text(content, encoding="utf-8")
    return [directory / name for name in contents]


def make_files(directory):
    directory.mkdir()
    for name in NAMES:
        if name.endswith(".txt"):
            (directory / name).write_text(f"the content of {name}", encoding="utf-8")
        else:
            (directory / name).mkdir()
            (directory / name / "inside").write_text("the content of inside", encoding="utf-8")
    return directory


def contents_of(directory):
    return {str(path.relative_to(directory)): path.read_text(encoding="utf-8")
            for path in directory.rglob("*") if path.is_file()}


# ---- xterm


def xterm(agent, directory):
    # xterm answers the status request after it has shown all earlier output.
    ready = directory / "ready"
    window = open_window("xterm_open", f"stty -icanon -echo; printf '%s\\n\\033[5n' '{TEXT}'; head -c 4 >/dev/null; "
                         f"touch '{ready}'; exec cat >/dev/null")
    wait_until(ready.exists, "the text in the terminal")
    text = agent.text_copied_by(lambda: xterm_select_first_line(window))
    same("the line copied", copied("a line", text), TEXT + "\n")

    agent.write_text(LINES)
    same("the text", xterm_paste("text", directory, LINES), LINES)
    agent.write_text(LONG)
    same("the long text", xterm_paste("long text", directory, LONG), LONG)
    agent.write_files("formats", *formats_in(directory))
    same("the text of formats", xterm_paste("formats", directory, PLAIN), PLAIN)
    agent.expect_silence("after a paste")


def xterm_select_first_line(window):
    """Drags the mouse from the start of the first line to the start of the second. A triple click would copy twice:
    its second click selects a word."""
    call("clipboard_reset")
    call("window_focus", window)
    call("xdotool", "mousemove", "--sync", "--window", window, 2, 8, "mousedown", 1)
    call("xdotool", "mousemove", "--sync", "--window", window, 2, 24, "mouseup", 1)
    call("wait_until", 60, "clipboard_is_new")


def xterm_paste(what, directory, expected):
    """Returns the first bytes that a program in the terminal reads, as many as expected."""
    ready, taken = directory / "ready", directory / "taken"
    ready.unlink()
    length = len(expected.encode())
    # In line mode, a terminal cuts lines at 4,095 bytes, so this uses byte mode.
    window = open_window("xterm_open", f"stty -icanon -echo; touch '{ready}'; exec head -c {length} >'{taken}'")
    wait_until(ready.exists, "the program in the terminal")
    call("xterm_paste", window)
    wait_until(lambda: taken.stat().st_size >= length, "the text in the terminal")
    text = taken.read_text(encoding="utf-8", errors="replace")
    pasted(what, text)
    return text


# ---- editors


def editor(program, loads=lambda text: text, saves=lambda text: text):
    """The test of an editor. `program` begins the name of its function in applications.sh. `loads` and `saves` tell
    what the editor makes of a text between a file and its window."""
    def test(agent, directory):
        _copy_from_editor(program, loads, agent, directory)
        _paste_into_editor(program, saves, agent, directory)
    return test


def _copy_from_editor(program, loads, agent, directory):
    for what, text in [("text", LINES), ("long text", LONG)]:
        source = directory / f"{what}.txt"
        source.write_text(text, encoding="utf-8")
        window = open_window(f"{program}_open", source)
        result = agent.text_copied_by(lambda window=window: call("editor_copy_all", window))
        same("what was copied", copied(what, result), loads(text))


def _paste_into_editor(program, saves, agent, directory):
    target = directory / "target.txt"
    target.write_text("before", encoding="utf-8")
    window = open_window(f"{program}_open", target)

    def paste(what, expected):
        def is_saved():
            # The paste may not have arrived at the first save.
            call("press", window, "ctrl+s")
            return target.read_text(encoding="utf-8") == saves(expected)
        press_until(is_saved, f"{what} in the file", ["press", window, "ctrl+a", "ctrl+v"])
        pasted(what, target.read_text(encoding="utf-8"))
        agent.expect_silence("after a paste")

    agent.write_text(LINES)
    paste("text", LINES)
    agent.write_text(LONG)
    paste("long text", LONG)
    agent.write_files("formats", *formats_in(directory))
    paste("formats", PLAIN)


# ---- thunar


def thunar(agent, directory):
    source = make_files(directory / "source")
    window = open_window("thunar_open", source)
    wanted = sorted(str(source / name) for name in NAMES)
    paths = copied("files", agent.files_copied_by(lambda: call("thunar_copy_all", window)))
    same("the paths copied", sorted(paths), wanted)
    paths = copied("files to be moved", agent.files_copied_by(lambda: call("thunar_cut_all", window)))
    same("the paths cut", sorted(paths), wanted)

    target = directory / "target"
    target.mkdir()
    window = open_window("thunar_open", target)
    agent.write_files("files", *wanted)
    press_until(lambda: contents_of(target), "any file in the folder", ["thunar_paste", window])
    wait_until(lambda: contents_of(target) == contents_of(source), "all files in the folder")
    pasted("files", sorted(contents_of(target)))
    same("what is there of what was pasted", sorted(str(path) for path in source.iterdir()), wanted)
    agent.expect_silence("after a paste")


# ---- LibreOffice Writer


def writer(agent, directory):
    (directory / "picture.png").write_bytes(make_random_png(300, 200, PIXEL))
    source = directory / "source.odt"
    call("writer_new_file", source, f'{HTML}<p><img src="file://{directory}/picture.png"></p>')
    window = open_window("writer_open", source)
    exports = agent.exports_copied_by(lambda: call("copy_with", window, "ctrl+Home", "shift+End", "ctrl+c"))
    check_writer_text(copied("text", exports))
    # The picture is the document's first object.
    exports = agent.exports_copied_by(lambda: call("copy_with", window, "Home", "shift+F4", "ctrl+c"), "image")
    copied("a picture", exports)
    same("the picture copied", [read_png(content) for content in exports.values()], [(300, 200, PIXEL)])
    call("writer_close", window)

    target = directory / "target.odt"
    call("writer_new_file", target, "before")
    window = open_window("writer_open", target)
    writer_pastes(agent, directory, window, target)
    call("writer_close", window)


def check_writer_text(exports):
    same("the formats", sorted(exports), ["text.html", "text.rtf", "text.txt"])
    same("the text", exports["text.txt"].decode().strip(), PLAIN)
    html = exports["text.html"].decode()
    expect(re.search(r"<b>tout\s+le\s+monde</b>", html), f"the HTML: {html}")
    expect(all(word in html for word in ("déjà", "€", "日本")), f"the HTML: {html}")
    rtf = exports["text.rtf"].decode()
    expect(rtf.startswith("{\\rtf") and re.search(r"\\b\b[^}]*tout le monde", rtf), f"the RTF: {rtf}")


def writer_pastes(agent, directory, window, target):
    def paste(what):
        call("writer_paste_and_save", window, target)
        text = call("writer_text", target).strip()
        pasted(what, (text, pictures_in(target)))
        agent.expect_silence("after a paste")
        return text

    agent.write_text(PLAIN)
    same("the text", paste("text"), PLAIN)
    expect(not is_bold(target), "plain text has become bold")
    formats = formats_in(directory)
    for what, paths in [("formats", formats), ("HTML and text", [formats[0], formats[2]]), ("RTF", [formats[1]])]:
        agent.write_files("formats", *paths)
        same(what, paste(what), PLAIN)
        expect(is_bold(target), f"{what}: nothing is bold")

    # A replaced picture may stay in the file.
    agent.write_image_data(make_random_png(31, 17, PIXEL))
    paste("a picture of the history")
    expect((31, 17, PIXEL) in pictures_in(target), f"the pictures: {pictures_in(target)}")
    (directory / "other.png").write_bytes(make_random_png(1000, 700, PIXEL))
    agent.write_files("image", directory / "other.png")
    paste("a picture from a file")
    expect((1000, 700, PIXEL) in pictures_in(target), f"the pictures: {pictures_in(target)}")
    agent.write_files("files", directory / "picture.png")
    paste("a file that is a picture")
    expect((300, 200, PIXEL) in pictures_in(target), f"the pictures: {pictures_in(target)}")


def is_bold(document):
    with zipfile.ZipFile(document) as archive:
        content = archive.read("content.xml").decode()
    styles = re.findall(r'<style:style style:name="([^"]*)"[^>]*>(?:(?!</style:style>).)*fo:font-weight="bold"', content)
    return any(re.search(f'text:style-name="{name}">[^<]*tout le monde', content) for name in styles)


def pictures_in(document):
    with zipfile.ZipFile(document) as archive:
        return [read_png(archive.read(name)) for name in archive.namelist()
                if name.startswith("Pictures/") and name.endswith(".png")]


# ---- GIMP


def gimp(agent, directory):
    picture, other = directory / "picture.png", directory / "other.png"
    picture.write_bytes(make_random_png(300, 200, PIXEL))
    other.write_bytes(make_random_png(31, 17, PIXEL))
    window = open_window("gimp_open", picture)

    def copy(what, size):
        exports = copied(what, agent.exports_copied_by(lambda: call("gimp_copy_all", window)))
        same("the formats", sorted(exports), ["image.jpeg", "image.png", "image.tiff"])
        same("the picture", read_png(exports["image.png"]), (*size, PIXEL))

    def paste(what, size):
        title = call("gimp_paste_as_new_image", window).strip()
        pasted(what, title)
        expect(f" {size[0]}x{size[1]} " in title, f"the new image's title: {title}")
        agent.expect_silence("after a paste")

    copy("a picture", (300, 200))
    agent.write_image_data(make_random_png(1000, 700, PIXEL))
    paste("a picture of the history", (1000, 700))
    copy("the same", (1000, 700))
    agent.write_files("image", other)
    paste("a picture from a file", (31, 17))
    copy("the same", (31, 17))
    (directory / "image.svg").write_text('<svg xmlns="http://www.w3.org/2000/svg" width="40" height="30"/>')
    agent.write_files("formats", directory / "image.svg")
    paste("an SVG picture", (40, 30))


ALL = {"xterm": xterm, "mousepad": editor("mousepad"), "thunar": thunar, "writer": writer, "gimp": gimp}
