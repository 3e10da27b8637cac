"""The tests of native programs of Wayland, on the compositor sway; see application_tests.py."""

import browser_tests
from application_tests import editor, thunar, writer


def without_line_end(text):
    return text.removesuffix("\n")


def with_line_end(text):
    return text + "\n"


ALL = {
    "wayland.mousepad": editor("mousepad"),  # GTK 3
    "wayland.gnome-text-editor": editor("gnome_text_editor", loads=without_line_end, saves=with_line_end),  # GTK 4
    "wayland.featherpad": editor("featherpad", saves=lambda text: with_line_end(without_line_end(text))),  # Qt 5
    "wayland.thunar": thunar,
    "wayland.writer": writer,
    "wayland.chromium": browser_tests.ALL["chromium"],
    "wayland.firefox": browser_tests.browser("firefox", ["image.jpeg", "image.png", "text.html"], 1),
}
