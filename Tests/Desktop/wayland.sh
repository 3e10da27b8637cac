# Bash functions for the windows, the keyboard, the mouse and the clipboard of the compositor sway. Of what
# applications.sh says of its functions, all is true of these. The file x11.sh has the same functions for an X server.
#
# shellcheck shell=bash disable=SC2034 # applications.sh uses WINDOW_SYSTEM

WINDOW_SYSTEM=wayland

# Prints the number, the process, the state of the focus and the title of each window, one a line.
windows() {
  swaymsg -t get_tree | python3 -c '
import json, sys
def show(node):
    if node.get("pid"):
        print(node["id"], node["pid"], int(node["focused"]), (node["name"] or "").replace("\n", " "))
    for child in node["nodes"] + node["floating_nodes"]:
        show(child)
show(json.load(sys.stdin))'
}

windows_named() { # TITLE-REGEX
  local number rest title
  windows | while read -r number rest rest title; do
    [[ $title =~ $1 ]] && echo "$number"
  done | grep .
}

window_title() { # WINDOW
  windows | sed -n "s/^$1 [0-9]* [01] //p" | grep .
}

window_process() { # WINDOW
  windows | sed -n "s/^$1 \([0-9]*\) .*/\1/p" | grep .
}

window_is_gone() { # WINDOW
  ! window_process "$1"
}

window_has_focus() { # WINDOW
  windows | grep -q "^$1 [0-9]* 1 "
}

window_focus() { # WINDOW
  swaymsg "[con_id=$1] focus" >/dev/null || return
  wait_until "$APPLICATION_TIME_OUT" window_has_focus "$1"
}

input() { # COMMAND...: see the program wayland-input
  local answer
  echo "$*" >"$DESKTOP_INPUT" && read -r -t "$APPLICATION_TIME_OUT" answer <"$DESKTOP_INPUT.done" &&
    [ "$answer" = "done" ]
}

type_keys() { # KEY...
  local key
  for key in "$@"; do
    input key "$key" || return
  done
}

# Each window fills the output.
click_middle() { # WINDOW BUTTON
  window_focus "$1" || return
  PICTURE_BEFORE_CLICK=$(desktop_picture)
  input click "$2" 640 400
}

# The compositor tells nothing of menus, so this sees one by what it covers.
menu_is_open() { # WINDOW
  [ "$(desktop_picture)" != "$PICTURE_BEFORE_CLICK" ]
}

desktop_picture() {
  grim -t ppm - | cksum
}

clipboard_targets() {
  timeout 5 wl-paste --list-types 2>/dev/null
}

primary_selection() {
  timeout 5 wl-paste --primary --no-newline 2>/dev/null
}

clipboard_offer() { # TARGET: offers the standard input
  wl-copy --type "$1" >/dev/null 2>&1
}
