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

# ---- windows

windows_named() { # TITLE-REGEX
  xdotool search --onlyvisible --name "$1"
}

window_open() { # TITLE-REGEX: waits for a window with a matching title and stores its number in WINDOW
  WINDOW=
  wait_until "$APPLICATION_TIME_OUT" windows_named "$1" || return
  WINDOW=$(windows_named "$1" | tail -n 1)
}

window_title() { # WINDOW
  xdotool getwindowname "$1"
}

window_has_other_title() { # WINDOW TITLE
  [ "$(window_title "$1")" != "$2" ]
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

press() { # WINDOW KEY...: for instance ctrl+a
  window_focus "$1" || return
  shift
  xdotool key --clearmodifiers --delay 50 "$@"
}

click() { # WINDOW BUTTON X Y: relative to the window
  window_focus "$1" || return
  xdotool mousemove --sync --window "$1" "$3" "$4" click "$2"
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

# ---- the clipboard, as another program sees it

clipboard_targets() {
  timeout 5 xclip -selection clipboard -o -t TARGETS 2>/dev/null
}

clipboard_offers() { # TARGET
  clipboard_targets | grep -qxF -e "$1"
}

clipboard_read() { # TARGET
  timeout 10 xclip -selection clipboard -o -t "$1" 2>/dev/null
}

# An application does not announce that it has copied. So this target is put on the clipboard first, and its absence
# shows the copy.
NOT_COPIED=application/x-nothing-was-copied-yet

clipboard_reset() {
  printf x | xclip -selection clipboard -t "$NOT_COPIED" >/dev/null 2>&1
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

mousepad_copy_all() { # WINDOW
  copy_with "$1" ctrl+a ctrl+c
}

mousepad_paste_and_save() { # WINDOW FILE: the file opened in the window
  paste_and_save "$1" "$2"
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

# ---- chromium

# Each call uses a new profile and software rendering. There is no sandbox, because Chromium refuses one for root.
chromium_open() { # TITLE-REGEX FILE-OR-URL
  local profile
  profile=$(mktemp -d "$HOME/chromium.XXXXXX") || return
  chromium --no-sandbox --ozone-platform=x11 --user-data-dir="$profile" --no-first-run --no-default-browser-check \
    --disable-gpu --password-store=basic --disable-background-networking --disable-component-update --disable-sync \
    --disable-dev-shm-usage --window-position=0,0 --window-size=1000,700 "$2" >/dev/null 2>&1 </dev/null &
  window_open "$1.* - Chromium\$"
}

chromium_copy_all() { # WINDOW
  copy_with "$1" ctrl+a ctrl+c
}

# Opens a page that a picture fills, whatever its size.
chromium_open_picture() { # FILE: an absolute path without characters that are special in a URL
  local page=$HOME/picture.html
  printf '<!doctype html><title>picture</title><img src="file://%s" style="%s">' "$1" \
    'position: fixed; left: 0; top: 0; width: 100vw; height: 100vh' >"$page"
  chromium_open '^picture' "file://$page"
}

# Chooses "Copy image" in the context menu (its key is Y in English). The middle of the window must show a picture.
chromium_copy_image() { # WINDOW
  local attempt WIDTH HEIGHT
  clipboard_reset || return
  for attempt in 1 2 3; do
    eval "$(xdotool getwindowgeometry --shell "$1" | grep -E '^(WIDTH|HEIGHT)=')"
    click "$1" 3 $((WIDTH / 2)) $((HEIGHT / 2)) || return
    wait_until 5 chromium_menu_is_open "$1" 2>/dev/null && xdotool key y
    wait_until 4 clipboard_is_new 2>/dev/null && return
    xdotool key Escape
  done
  echo "No image was copied in window $1" >&2
  return 1
}

chromium_menu_is_open() { # WINDOW: menus are windows of the same process that the window manager does not manage
  local count
  count=$(xdotool search --onlyvisible --pid "$(xdotool getwindowpid "$1")" | wc -l)
  [ "$count" -gt 1 ]
}

# Opens a page whose title reports each paste: "pasted", the number of pastes, and a JSON text. The JSON text holds the
# types that the page sees, the texts, and the name, type and size of each file. For a picture it also holds the size in
# pixels and the colour of the first pixel.
chromium_open_paste_page() {
  local page=$HOME/paste.html
  cat >"$page" <<'PAGE'
<!doctype html><meta charset="utf-8"><title>paste here</title>
<body contenteditable autofocus style="min-height: 90vh">x</body>
<script>
let count = 0;
async function describe(file) {
  const result = {name: file.name, type: file.type, bytes: file.size};
  if (file.type.startsWith("image/")) {
    const picture = await createImageBitmap(file);
    const canvas = document.createElement("canvas");
    canvas.width = result.width = picture.width;
    canvas.height = result.height = picture.height;
    const context = canvas.getContext("2d");
    context.drawImage(picture, 0, 0);
    result.pixel = Array.from(context.getImageData(0, 0, 1, 1).data);
  }
  return result;
}
document.addEventListener("paste", async event => {
  event.preventDefault();
  const data = event.clipboardData, result = {types: Array.from(data.types), texts: {}, files: []};
  for (const type of result.types)
    if (type != "Files") result.texts[type] = data.getData(type);
  const files = Array.from(data.files);
  for (const file of files) result.files.push(await describe(file));
  document.title = "pasted " + ++count + " " + JSON.stringify(result);
});
document.body.focus();
</script>
PAGE
  chromium_open '^paste here' "file://$page"
}

chromium_paste() { # WINDOW: pastes into the page above and prints the JSON text
  local attempt before title
  before=$(window_title "$1")
  for attempt in 1 2 3 4 5; do
    press "$1" ctrl+v || return
    wait_until 4 window_has_other_title "$1" "$before" 2>/dev/null && break
  done
  title=$(window_title "$1")
  if [ "$title" = "$before" ]; then
    echo "Nothing was pasted into window $1" >&2
    return 1
  fi
  title=${title#pasted * }
  echo "${title% - Chromium}"
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
  process=$(xdotool getwindowpid "$1") && press "$1" ctrl+q || return
  # A program that reads the copied content as a link changes the document. The key is that of "Don't Save" in English.
  wait_until 2 window_is_gone "$1" 2>/dev/null || xdotool key alt+n
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
