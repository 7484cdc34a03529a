#!/usr/bin/env bash
# Opens the options dialog and the settings sheet in a virtual display, chooses treatments with the
# keyboard, and looks at the options file and at what the screen showed.
# usage: options_window.sh DRIVERHOST MODELS
set -euo pipefail
host=$1
models=$2

work=$(mktemp -d)
server=
dialog=
tidy_up() {
    for process in $dialog $server; do kill "$process" 2>/dev/null || true; done
    rm -rf "$work"
}
trap tidy_up EXIT
fail() {
    echo "options_window.sh: $*" >&2
    cat "$work"/*.log >&2 || true
    exit 1
}

# wait_for TEXT COMMAND...: until the command succeeds, half a minute at most.
wait_for() {
    local what=$1
    shift
    for _ in $(seq 150); do
        "$@" >/dev/null 2>&1 && return
        sleep 0.2
    done
    fail "$what"
}

cp -R "$models" "$work/base"
mkdir -p "$work/base/Jobs and Settings/OptionsDrivers" "$work/screen"
export QL_BASE_FOLDER=$work/base
unset QL_DIALOG_SCRIPT QL_MESSAGE_FILE
head -c 256 /dev/zero >"$work/block"
options=("$host" options)
"${options[@]}" set "$work/block" Overprint --model "Fenland W6" >"$work/set.log"

# The server chooses a free display and writes its number; its screen stands in a file.
mkfifo "$work/number"
Xvfb -displayfd 3 -screen 0 640x480x24 -fbdir "$work/screen" 3>"$work/number" \
    >"$work/server.log" 2>&1 &
server=$!
read -r -t 60 number <"$work/number" || fail "no virtual display"
export DISPLAY=:$number
unset WAYLAND_DISPLAY
cp "$work/screen/Xvfb_screen0" "$work/empty"

# press KEY...: the window takes its keys in order, however late.
press() {
    xdotool key "$@"
}
# shows_more_than BYTES: so much of the screen differs from the empty one.
shows_more_than() {
    [ "$(cmp -l "$work/empty" "$work/screen/Xvfb_screen0" | wc -l)" -gt "$1" ]
}
# open_window TITLE OPTION...: a window of that title has the keyboard.
open_window() {
    local title=$1
    shift
    "${options[@]}" "$@" --model "Fenland W6" >"$work/edit.log" 2>&1 &
    dialog=$!
    wait_for "no window opens: $*" xdotool search --onlyvisible --name "$title"
    xdotool windowfocus --sync "$(xdotool search --onlyvisible --name "$title" | head -n 1)"
    wait_for "the screen shows no dialog" shows_more_than 20000
}
expect_stored() {
    wait_for "the window stays" sh -c "! kill -0 $dialog"
    wait "$dialog" || fail "the window ends with status $?"
    dialog=
    grep -q "SupportWhiteType=\"$1\"" "$work/base/Jobs and Settings/OptionsDrivers"/QL_DROP_*.xml ||
        fail "$2: $("${options[@]}" show "$work/block" --model "Fenland W6")"
}

open_window "Driver Options" edit "$work/block"
# To the list, past the buttons, from Overprint to Spot above it, and back to OK.
press Tab Tab Tab Up shift+Tab shift+Tab shift+Tab Return
expect_stored 1 "OK does not store the choice"
open_window "Driver Options" edit "$work/block"
press Tab Tab Tab Down Escape
expect_stored 1 "Escape stores a choice"
open_window "Settings" --sheet "$work/block"
press Right Tab Tab Down Tab Tab Return  # the driver's page, its list, OK
expect_stored 3 "the sheet does not store the choice"

echo "the windows stored what was chosen"
