#!/bin/bash
# Retakes the guide's pictures of the main window playing, its row menu, the
# station check, the recorder (recording and after Stop), the scheduling
# windows and the skin gallery, from the built program against a loopback
# station, in a profile of their own under a virtual display.
# Usage: scripts/screenshots.sh [BUILD_DIR]   (default: build)
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
build=$(cd "${1:-$root/build}" && pwd)
images=$root/docs/images

if [ -z "${SHOTS_SCREEN:-}" ]; then
  SHOTS_SCREEN=1280x900 xvfb-run -a -s "-screen 0 1280x900x24" "$0" "$build"
  # the recorder's own picture shows how it fits a laptop's 768 lines
  SHOTS_SCREEN=1366x768 xvfb-run -a -s "-screen 0 1366x768x24" "$0" "$build"
  exit
fi

work=$(mktemp -d)
pids=()
cleanup() {
  for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
  wait
  rm -rf "$work"
}
trap cleanup EXIT
export HOME=$work XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config XDG_CACHE_HOME=$work/cache
unset APPDATA DBUS_SESSION_BUS_ADDRESS

ffmpeg -loglevel error -f lavfi -i "sine=frequency=330:duration=20" -b:a 128k "$work/tone.mp3"
python3 "$here/icystation.py" "$work/tone.mp3" >"$work/port" &
pids+=($!)
until [ -s "$work/port" ]; do sleep 0.1; done
station=http://127.0.0.1:$(cat "$work/port")/stream

# Waits for a window whose title matches $1 and prints its id.
window() {
  for _ in $(seq 100); do
    id=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -1)
    [ -n "$id" ] && echo "$id" && return
    sleep 0.2
  done
  echo "no window '$1'" >&2
  return 1
}

start() {
  "$build/bin/tunecatch" 2>>"$work/log" &
  program=$!
  pids+=("$program")
  main=$(window '^Tunecatch$')
  xdotool windowfocus --sync "$main"
  sleep 1
  # the loopback station's name cell
  xdotool mousemove --window "$main" 100 166 click 1
  sleep 0.5
}

stop() {
  kill "$program"
  wait "$program" 2>/dev/null || true
}

keys() {
  xdotool key --delay 150 "$@"
  sleep 0.5
}

# Clicks a recorder's Record/Stop button, at its bottom left.
startStop() {
  local HEIGHT
  eval "$(xdotool getwindowgeometry --shell "$1" | grep HEIGHT)"
  xdotool mousemove --window "$1" 60 $((HEIGHT - 26)) click 1
}

# Opens a recorder for the current row, starts it and prints its window.
record() {
  keys alt+s r
  local id
  id=$(window 'Recorder$')
  sleep 1
  startStop "$id"
  echo "$id"
}

# settings SKIN THEME [MORE_LINES]
settings() {
  printf '[CONFIG]\nV=32\nAppSkinOn=True\nAppSkinFile=%s\nTheme=%s\n%b\n' \
    "$build/bin/$1.urf" "$2" "${3:-}" >"$XDG_CONFIG_HOME/Tunecatch/Tunecatch.conf"
}

# The source tree's station list with the loopback station on top. The
# installed copy counts as taken over, so that it is neither taken nor deleted.
data=$XDG_DATA_HOME/Tunecatch
mkdir -p "$data" "$XDG_CONFIG_HOME/Tunecatch"
printf '%s\r\n' "Loopback Test Stream±Test±128±mp3±Favourites±.\\%STATION%_%SONG%_%DATE%_%TIME%.mp3±True±5±±±$station±http://station.example/" >"$work/line"
iconv -f UTF-16 -t UTF-8 "$root/data/Stations.txt" | sed "/^#format/r $work/line" | iconv -f UTF-8 -t UTF-16 >"$data/Stations.txt"
if [ -f "$build/bin/Stations.txt" ]; then
  echo "$(stat -c %s "$build/bin/Stations.txt") $(sha256sum <"$build/bin/Stations.txt" | cut -d' ' -f1)" >"$data/Stations.taken"
fi

shot() {
  import -window "$1" "$work/shot.png"
  convert "$work/shot.png" -strip "$images/$2.png"
}

if [ "$SHOTS_SCREEN" = 1366x768 ]; then
  settings Zelvane 1 "RecorderWindow=\"0,0,640,764\"\nRecorderMonitor=1"
  start
  recorder=$(record)
  sleep 30
  shot "$recorder" recorder-window
  exit
fi

for skin in Zelvane Ledovec Kontrast; do
  for theme in 0 1; do
    name=$(echo "$skin" | tr A-Z a-z)-$([ $theme = 0 ] && echo pale-blue || echo black-night)
    settings "$skin" "$theme" "RecorderMonitor=0"
    start
    keys Return
    sleep 8
    shot "$main" "skin-$name-main"
    [ "$skin$theme" = Zelvane1 ] && shot "$main" main-window-playing
    recorder=$(record)
    sleep 10
    shot "$recorder" "skin-$name-recorder"
    stop
  done
done

settings Zelvane 1 ""
start
keys alt+s s
shot "$(window 'Scheduled recording$')" task-dialog
keys Return
sleep 1
keys Return
sleep 3
shot "$(window 'Scheduled recordings$')" scheduled-recordings
stop

# tall enough for the summary under the title delay
settings Zelvane 1 "RecorderWindow=\"0,0,640,610\""
start
recorder=$(record)
sleep 20
startStop "$recorder"
sleep 2
shot "$recorder" recorder-summary
stop

start
# the row's menu is a window of its own: take the window's part of the screen
xdotool mousemove --window "$main" 100 187 click 3
sleep 1
eval "$(xdotool getwindowgeometry --shell "$main")"
import -window root -crop "${WIDTH}x$HEIGHT+$X+$Y" +repage "$work/shot.png"
convert "$work/shot.png" -strip "$images/context-menu.png"
stop

settings Zelvane 1 ""
start
keys alt+l c
sleep 40
shot "$main" station-check
stop
