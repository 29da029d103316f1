#!/usr/bin/env bash
# Runs a command on a virtual X server of its own, on a display number that nobody else has.
# scripts/with-display.sh COMMAND [ARGUMENT...]
# TESSERA_SCREEN is its size; default 1600x1000.
set -euo pipefail

folder=$(mktemp -d)
mkfifo "$folder/display"
Xvfb -displayfd 3 -screen 0 "${TESSERA_SCREEN:-1600x1000}x24" -nolisten tcp -noreset \
    3>"$folder/display" 2>"$folder/log" &
server=$!
trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; rm -rf "$folder"' EXIT

if ! read -r -t 60 number <"$folder/display"; then
    echo "with-display: the virtual X server does not start" >&2
    cat "$folder/log" >&2
    exit 1
fi
# No desktop around it: its own runtime folder, and no session bus to wait for.
mkdir -m 700 "$folder/runtime"
DISPLAY=":$number" XDG_RUNTIME_DIR="$folder/runtime" DBUS_SESSION_BUS_ADDRESS=disabled: "$@"
