# Bash functions for the windows, the keyboard, the mouse and the clipboard of an X server. Of what applications.sh says
# of its functions, all is true of these. The file wayland.sh has the same functions for a Wayland compositor.
#
# shellcheck shell=bash disable=SC2034 # applications.sh uses WINDOW_SYSTEM

WINDOW_SYSTEM=x11

windows_named() { # TITLE-REGEX
  xdotool search --onlyvisible --name "$1"
}

window_title() { # WINDOW
  xdotool getwindowname "$1"
}

window_process() { # WINDOW
  xdotool getwindowpid "$1"
}

window_is_gone() { # WINDOW
  ! xdotool getwindowname "$1"
}

window_has_focus() { # WINDOW: also if a child window has the focus
  local window
  window=$(xdotool getwindowfocus -f) && [ "$window" = "$1" ] && return
  window=$(xdotool getactivewindow) && [ "$window" = "$1" ]
}

window_focus() { # WINDOW
  xdotool windowactivate "$1" || return
  wait_until "$APPLICATION_TIME_OUT" window_has_focus "$1"
}

type_keys() { # KEY...
  xdotool key --clearmodifiers --delay 50 "$@"
}

click_middle() { # WINDOW BUTTON
  local WIDTH HEIGHT
  window_focus "$1" || return
  eval "$(xdotool getwindowgeometry --shell "$1" | grep -E '^(WIDTH|HEIGHT)=')"
  xdotool mousemove --sync --window "$1" $((WIDTH / 2)) $((HEIGHT / 2)) click "$2"
}

menu_is_open() { # WINDOW: menus are windows of the same process that the window manager does not manage
  local count
  count=$(xdotool search --onlyvisible --pid "$(window_process "$1")" | wc -l)
  [ "$count" -gt 1 ]
}

clipboard_targets() {
  timeout 5 xclip -selection clipboard -o -t TARGETS 2>/dev/null
}

primary_selection() {
  timeout 5 xclip -selection primary -o 2>/dev/null
}

clipboard_offer() { # TARGET: offers the standard input
  xclip -selection clipboard -t "$1" >/dev/null 2>&1
}
