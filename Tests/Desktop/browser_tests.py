"""The tests of the browsers; see application_tests.py."""

import http.server
import json
import pathlib
import queue
import re
import threading

from agent_session import Failure, expect
from application_tests import HTML, LINES, PIXEL, PLAIN, copied, formats_in, make_files, pasted, same
from desktop_applications import call, open_window
from pictures import make_random_png, read_png

PAGE = pathlib.Path(__file__).with_name("paste-page.html")


def browser(program, image_formats, most_files):
    """The test of a browser, a word of applications.sh. `image_formats` are the exports of a picture on a page,
    `most_files` is how many files the browser gives to a page."""
    def test(agent, directory):
        picture = directory / "picture.png"
        picture.write_bytes(make_random_png(1000, 700, PIXEL))
        _copy(program, image_formats, picture, agent, directory)
        with PastePage(program) as page:
            _paste(page, most_files, picture, agent, directory)
    return test


def _copy(program, image_formats, picture, agent, directory):
    page = directory / "page.html"
    page.write_text(f'<!doctype html><meta charset="utf-8"><title>page</title>{HTML}', encoding="utf-8")
    window = open_window("browser_open", program, "^page", page)
    exports = copied("a page", agent.exports_copied_by(lambda: call("browser_copy_all", window)))
    same("the formats of a page", sorted(exports), ["text.html", "text.txt"])
    same("the text of a page", exports["text.txt"].decode().strip(), PLAIN)
    html = exports["text.html"].decode()
    expect(re.search(r"<b\b[^>]*>tout le monde</b>", html) and "déjà" in html, f"the page's HTML: {html}")

    window = open_window("browser_open_picture", program, picture)
    exports = copied("an image", agent.exports_copied_by(lambda: call("browser_copy_image", window)))
    same("the formats of an image", sorted(exports), image_formats)
    same("the image", read_png(exports["image.png"]), (1000, 700, PIXEL))


class PastePage:
    """The page paste-page.html in a window of the browser, and the server that it reports to."""

    def __init__(self, program):
        reports = self._reports = queue.Queue()

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self.send_response(200)
                self.send_header("Content-Type", "text/html")
                self.end_headers()
                self.wfile.write(PAGE.read_bytes())

            def do_POST(self):
                report = self.rfile.read(int(self.headers["Content-Length"]))
                self.send_response(204)
                self.end_headers()
                reports.put(json.loads(report))

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        self._window = open_window("browser_open", program, "^paste here",
                                   f"http://127.0.0.1:{self._server.server_port}/")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._server.shutdown()
        self._server.server_close()

    def paste(self):
        """Returns what the page tells of a paste. A window that has just opened may lose the keys."""
        for _ in range(5):
            call("press", self._window, "ctrl+v")
            try:
                return self._reports.get(timeout=4)
            except queue.Empty:
                pass
        raise Failure("nothing was pasted into the page")


def _paste(page, most_files, picture, agent, directory):
    def paste(what):
        result = page.paste()
        pasted(what, result)
        agent.expect_silence("after a paste")
        return result

    agent.write_text(LINES)
    same("the text", paste("text")["texts"].get("text/plain"), LINES)

    agent.write_image_data(picture.read_bytes())
    _check_picture(paste("a picture of the history"), (1000, 700))
    small = directory / "small.png"
    small.write_bytes(make_random_png(31, 17, PIXEL))
    agent.write_files("image", small)
    _check_picture(paste("a picture from a file"), (31, 17))

    agent.write_files("formats", *formats_in(directory))
    texts = paste("formats")["texts"]
    same("the text among formats", texts.get("text/plain"), PLAIN)
    same("the HTML among formats", texts.get("text/html"), HTML)

    source = make_files(directory / "source")
    paths = sorted(str(path) for path in source.iterdir() if path.is_file())
    agent.write_files("files", *paths)
    files = {(file["name"], file["bytes"]) for file in paste("files")["files"]}
    same("the files", files, {(pathlib.Path(path).name, pathlib.Path(path).stat().st_size) for path in paths[:most_files]})


def _check_picture(result, size):
    same("the types", result["types"], ["Files"])
    same("the number of pictures", len(result["files"]), 1)
    file = result["files"][0]
    same("the picture's type", file["type"], "image/png")
    same("the picture", (file["width"], file["height"], tuple(file["pixel"])), (*size, (*PIXEL, 255)))


ALL = {"chromium": browser("chromium", ["image.png", "text.html"], 10)}
