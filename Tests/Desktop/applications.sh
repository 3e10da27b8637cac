# Bash functions that use real applications as a person does: open them, select all, copy, paste, and read the result.
# A script that runs on a desktop of its own sources this file (see the program "desktop" beside it).
#
# A function that waits fails at its time-out and prints what it waited for. A busy machine needs far less time.
# The functions "..._open" store the number of an application's window in WINDOW. The functions that press keys first
# give the focus to their window.
#
# shellcheck shell=bash disable=SC2034 # callers use WINDOW

APPLICATION_TIME_OUT=${APPLICATION_TIME_OUT:-60} # seconds
WINDOW=

# ---- waiting

wait_until() { # SECONDS COMMAND...: repeats the command until it succeeds
  local end=$((SECONDS + $1))
  shift
  until "$@" >/dev/null 2>&1; do
    if [ "$SECONDS" -ge "$end" ]; then
      echo "This did not come true: $*" >&2
      return 1
    fi
    sleep 0.05
  done
}

# ---- windows, the keyboard, the mouse, and the clipboard as another program sees it

if [ -n "${WAYLAND_DISPLAY:-}" ]; then
  # shellcheck source=wayland.sh
  . "$(dirname "${BASH_SOURCE[0]}")/wayland.sh"
else
  # shellcheck source=x11.sh
  . "$(dirname "${BASH_SOURCE[0]}")/x11.sh"
fi

window_open() { # TITLE-REGEX: waits for a window with a matching title and stores its number in WINDOW
  WINDOW=
  wait_until "$APPLICATION_TIME_OUT" windows_named "$1" || return
  WINDOW=$(windows_named "$1" | tail -n 1)
}

window_has_other_title() { # WINDOW TITLE
  [ "$(window_title "$1")" != "$2" ]
}

press() { # WINDOW KEY...: for instance ctrl+a
  window_focus "$1" || return
  shift
  type_keys "$@"
}

# ---- files

file_state() { # FILE
  stat -c '%i %Y %.9Y %s' "$1" 2>/dev/null
}

file_has_changed() { # FILE FORMER-STATE
  local state
  state=$(file_state "$1") && [ -s "$1" ] && [ "$state" != "$2" ]
}

# Replaces the whole content of an editor's window by pasting, then saves.
paste_and_save() { # WINDOW FILE
  local before
  before=$(file_state "$2")
  press "$1" ctrl+a ctrl+v ctrl+s || return
  wait_until "$APPLICATION_TIME_OUT" file_has_changed "$2" "$before"
}

clipboard_offers() { # TARGET
  clipboard_targets | grep -qxF -e "$1"
}

# An application does not announce that it has copied. So this target is put on the clipboard first, and its absence
# shows the copy.
NOT_COPIED=application/x-nothing-was-copied-yet

clipboard_reset() {
  printf x | clipboard_offer "$NOT_COPIED"
  wait_until 10 clipboard_offers "$NOT_COPIED"
}

clipboard_is_new() {
  local targets
  targets=$(clipboard_targets) && [ -n "$targets" ] && ! grep -qxF -e "$NOT_COPIED" <<<"$targets"
}

# Presses the keys until something is copied: an application that has just opened its window may lose keys.
copy_with() { # WINDOW KEY...
  local attempt
  clipboard_reset || return
  for attempt in 1 2 3 4 5; do
    press "$@" || return
    wait_until 4 clipboard_is_new 2>/dev/null && return
  done
  echo "Nothing was copied with: $*" >&2
  return 1
}

# ---- xterm: pastes text; copies what the mouse selects (three clicks select a line)

xterm_open() { # SHELL-COMMAND
  local title="terminal $RANDOM$RANDOM"
  xterm -xrm 'XTerm*selectToClipboard: true' -xrm 'XTerm*allowTitleOps: false' -u8 -T "$title" -geometry 80x24+0+0 \
    -e sh -c "$1" >/dev/null 2>&1 </dev/null &
  window_open "^$title\$"
}

xterm_paste() { # WINDOW
  press "$1" shift+Insert
}

xterm_copy_first_line() { # WINDOW
  clipboard_reset || return
  window_focus "$1" || return
  xdotool mousemove --sync --window "$1" 20 8 click --repeat 3 --delay 80 1
  wait_until "$APPLICATION_TIME_OUT" clipboard_is_new
}

# ---- mousepad: a small editor with GTK

mousepad_open() { # FILE
  mousepad --disable-server "$1" >/dev/null 2>&1 </dev/null &
  window_open "$(basename "$1").* - Mousepad\$"
}

editor_copy_all() { # WINDOW
  copy_with "$1" ctrl+a ctrl+c
}

# ---- other editors: gnome-text-editor (GTK 4) and featherpad (Qt)

# Its window is there before it has read a long file, whose last line end it does not show.
gnome_text_editor_open() { # FILE
  gnome-text-editor --standalone "$1" >/dev/null 2>&1 </dev/null &
  window_open "$(basename "$1").* - Text Editor\$" &&
    wait_until "$APPLICATION_TIME_OUT" selects_all "$WINDOW" "$(($(stat -c %s "$1") - 1))"
}

selects_all() { # WINDOW BYTES
  press "$1" ctrl+a && [ "$(primary_selection | wc -c)" -ge "$2" ]
}

featherpad_open() { # FILE
  featherpad --standalone "$1" >/dev/null 2>&1 </dev/null &
  window_open "$1( - .*)?\$"
}

# ---- thunar: copies and pastes files

thunar_open() { # DIRECTORY
  thunar "$1" >/dev/null 2>&1 </dev/null &
  window_open "^$(basename "$1") - Thunar\$"
}

thunar_copy_all() { # WINDOW
  copy_with "$1" ctrl+a ctrl+c
}

thunar_cut_all() { # WINDOW
  copy_with "$1" ctrl+a ctrl+x
}

thunar_paste() { # WINDOW
  press "$1" ctrl+v
}

# ---- file managers, each with a window of its own process

thunar_folder() { # DIRECTORY
  thunar "$1" >/dev/null 2>&1 </dev/null &
}

caja_folder() { # DIRECTORY
  caja --no-desktop --browser "$1" >/dev/null 2>&1 </dev/null &
}

nemo_folder() { # DIRECTORY
  nemo --no-desktop "$1" >/dev/null 2>&1 </dev/null &
}

nautilus_folder() { # DIRECTORY
  nautilus --new-window "$1" >/dev/null 2>&1 </dev/null &
}

# GTK 2 announces its focus only with these modules.
pcmanfm_folder() { # DIRECTORY
  GTK_MODULES=gail:atk-bridge pcmanfm --no-desktop --new-win "$1" >/dev/null 2>&1 </dev/null &
}

folder_open() { # FILE-MANAGER DIRECTORY: the window's title must contain the directory's name
  "$1_folder" "$2"
  window_open "^(.*[ /])?$(basename "$2")( - .*)?\$"
}

panel_open() { # waits until the panel has the focus; stores its number in WINDOW
  window_open '^Nommer avant de coller$' && wait_until "$APPLICATION_TIME_OUT" window_has_focus "$WINDOW"
}

panel_name() { # WINDOW NAME: replaces the name in the field
  window_focus "$1" && xdotool key --clearmodifiers ctrl+a && xdotool type --delay 20 "$2"
}

# Prints a checksum of what the window shows.
window_picture() { # WINDOW
  import -window "$1" rgb:- | cksum
}

# ---- browsers: chromium and firefox

# Each call uses a new profile and software rendering. There is no sandbox, because Chromium refuses one for root.
chromium_start() { # FILE-OR-URL
  local profile
  profile=$(mktemp -d "$HOME/chromium.XXXXXX") || return
  chromium --no-sandbox "--ozone-platform=$WINDOW_SYSTEM" --user-data-dir="$profile" --no-first-run \
    --no-default-browser-check --disable-gpu --password-store=basic --disable-background-networking \
    --disable-component-update --disable-sync --disable-dev-shm-usage --window-position=0,0 --window-size=1000,700 \
    "$1" >/dev/null 2>&1 </dev/null &
}

firefox_start() { # FILE-OR-URL
  local profile
  profile=$(mktemp -d "$HOME/firefox.XXXXXX") || return
  printf 'user_pref("%s", %s);\n' browser.aboutwelcome.enabled false browser.shell.checkDefaultBrowser false \
    browser.startup.homepage_override.mstone '"ignore"' datareporting.policy.dataSubmissionEnabled false \
    termsofuse.bypassNotification true app.normandy.enabled false browser.sessionstore.resume_from_crash false \
    >"$profile/user.js"
  firefox-esr --no-remote --profile "$profile" "$1" >/dev/null 2>&1 </dev/null &
}

browser_open() { # chromium|firefox TITLE-REGEX FILE-OR-URL
  "$1_start" "$3" && window_open "$2.* [-—] (Chromium|Mozilla Firefox)\$"
}

browser_copy_all() { # WINDOW
  copy_with "$1" ctrl+a ctrl+c
}

# Opens a page that a picture fills, whatever its size.
browser_open_picture() { # chromium|firefox FILE: an absolute path without characters that are special in a URL
  local page=$HOME/picture.html
  printf '<!doctype html><title>picture</title><img src="file://%s" style="%s">' "$2" \
    'position: fixed; left: 0; top: 0; width: 100vw; height: 100vh' >"$page"
  browser_open "$1" '^picture' "file://$page"
}

# Chooses "Copy image" in the context menu (its key is Y in English). The middle of the window must show a picture.
browser_copy_image() { # WINDOW
  local attempt
  clipboard_reset || return
  for attempt in 1 2 3; do
    click_middle "$1" 3 || return
    wait_until 5 menu_is_open "$1" 2>/dev/null && type_keys y
    wait_until 4 clipboard_is_new 2>/dev/null && return
    type_keys Escape
  done
  echo "No image was copied in window $1" >&2
  return 1
}

# ---- LibreOffice Writer

# The profile is separate, so that no other process of the application takes over the document.
writer_open() { # FILE
  soffice --writer --norestore --nologo --nofirststartwizard "-env:UserInstallation=file://$HOME/writer" "$1" \
    >/dev/null 2>&1 </dev/null &
  window_open "$(basename "$1").* - LibreOffice Writer\$"
}

writer_copy_all() { # WINDOW
  copy_with "$1" ctrl+a ctrl+c
}

# Replaces the whole document by pasting. Repeats if nothing arrives: a window that has just opened may lose the first
# paste. Fails if nothing ever arrives, as with a format that Writer does not take.
writer_paste_and_save() { # WINDOW FILE.odt: the file opened in the window
  local attempt
  for attempt in 1 2 3; do
    press "$1" ctrl+a x || return # the x remains if nothing can be pasted
    paste_and_save "$1" "$2" || return
    wait_until "$APPLICATION_TIME_OUT" unzip -tqq "$2" || return
    writer_has_content "$2" && return
    echo "Nothing was pasted into $2 at attempt $attempt" >&2
  done
  return 1
}

# The x counts as no content even beside a picture: a deleted picture may still be in the file.
writer_has_content() { # FILE.odt
  local text
  text=$(writer_text "$1" | tr -d '[:space:]')
  [ "$text" != x ] && [ -n "$text$(writer_pictures "$1")" ]
}

# Call this at the end: a killed Writer would leave a socket in the temporary directory.
writer_close() { # WINDOW
  local process
  process=$(window_process "$1") && press "$1" ctrl+q || return
  # A program that reads the copied content as a link changes the document. The key is that of "Don't Save" in English.
  wait_until 2 window_is_gone "$1" 2>/dev/null || type_keys alt+n
  wait_until "$APPLICATION_TIME_OUT" process_has_ended "$process"
}

process_has_ended() { # PID: true also for a zombie
  ! readlink "/proc/$1/exe"
}

writer_text() { # FILE.odt: prints its text, one line for each paragraph
  unzip -p "$1" content.xml | sed -e 's/.*<office:text//' -e 's/^[^>]*>//' -e 's/<\/text:[ph][^>]*>/\n/g' -e 's/<[^>]*>//g'
}

writer_pictures() { # FILE.odt: prints the names of its pictures
  unzip -Z1 "$1" 'Pictures/?*' 2>/dev/null
}

# The application itself converts the text to an .odt file.
writer_new_file() { # FILE.odt HTML
  local source=${1%.odt}.html
  printf '<html><head><meta charset="utf-8"></head><body>%s</body></html>' "$2" >"$source"
  timeout "$APPLICATION_TIME_OUT" soffice "-env:UserInstallation=file://$HOME/writer" --headless \
    --convert-to odt --outdir "$(dirname "$1")" "$source" >/dev/null 2>&1 </dev/null
  rm -f "$source"
  [ -s "$1" ]
}

# ---- GIMP

gimp_open() { # FILE
  local name
  name=$(basename "$1")
  gimp --no-splash --new-instance "$1" >/dev/null 2>&1 </dev/null &
  window_open "${name%.*}.*GIMP\$"
}

gimp_copy_all() { # WINDOW
  copy_with "$1" ctrl+a ctrl+c
}

# Between two images the window may have the program's name alone for a moment.
window_has_other_image() { # WINDOW TITLE-BEFORE
  window_has_other_title "$1" "$2" && [[ $(window_title "$1") == *[0-9]x[0-9]* ]]
}

# Prints the new image's title. It ends with the size in pixels: "... 300x200 - GIMP", with a longer dash.
gimp_paste_as_new_image() { # WINDOW
  local before
  before=$(window_title "$1")
  press "$1" ctrl+shift+v || return
  wait_until "$APPLICATION_TIME_OUT" window_has_other_image "$1" "$before" || return
  window_title "$1"
}
