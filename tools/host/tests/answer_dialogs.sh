#!/usr/bin/env bash
# Answers the modal windows that the editor.sh "menus" case opens, in the order its script opens
# them, as a user would: waits for each by its title on the current X display, types into it
# with xdotool and presses Enter. Prints "answered TITLE" for each; fails when one never shows
# or stays open. OUT_DIR is the folder of the files it names.
set -euo pipefail

# The first window titled exactly $1, waiting up to 20 s for it.
wait_window() {
  local id
  for _ in $(seq 100); do
    id=$(xdotool search --name "^$1\$" 2>/dev/null | head -1)
    [[ -n "$id" ]] && { echo "$id"; return 0; }
    sleep 0.2
  done
  return 1
}

window_gone() {
  for _ in $(seq 100); do
    xdotool search --name "^$1\$" >/dev/null 2>&1 || return 0
    sleep 0.2
  done
  return 1
}

# Types $2 (if any) into the window titled $1 once it shows, then Enter, as a user would.
answer_window() {
  local id
  id=$(wait_window "$1") || { echo "no window '$1'"; return 1; }
  sleep 1
  xdotool windowfocus --sync "$id" 2>/dev/null || true
  [[ -n "${2:-}" ]] && xdotool type --delay 30 "$2"
  xdotool key Return
  window_gone "$1" || { echo "window '$1' stayed"; return 1; }
  echo "answered $1"
}

# OUT_DIR as wine sees it.
windows=${OUT_DIR//\//\\}
answer_window "Save Bank" "Z:$windows\\saved.fxb"
answer_window "Load Bank" "Z:$windows\\saved.fxb"
answer_window "Load Bank" "Z:$windows\\broken.fxb"
answer_window "Error"
