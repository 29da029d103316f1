#!/usr/bin/env bash
# Makes the pictures of the documentation from the running application: each tab, dialog and help
# page in light and dark into docs/pictures and docs/pictures/dark. Those for looking at the program on
# a screen of 2560 by 1440 at scale 2 go to build/pictures/scale2.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset release >/dev/null
cmake --build --preset release --target ScreenshotsTest

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT

# take FOLDER PALETTE SCREEN SCALE
take() {
    local folder=$1
    echo "Pictures in the $2 palette, $3 at scale $4: $folder"
    mkdir -p "$folder"
    rm -rf "$home"/*
    if ! HOME=$home XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data LC_ALL=C.UTF-8 \
        QT_QPA_PLATFORM=xcb QT_SCALE_FACTOR=$4 TESSERA_SCREEN=$3 \
        TESSERA_PALETTE=$2 TESSERA_PICTURES=$PWD/$folder \
        scripts/with-display.sh build/release/tests/ScreenshotsTest >"$home/log" 2>&1; then
        cat "$home/log" >&2
        exit 1
    fi
}

take docs/pictures light 1280x800 1
take docs/pictures/dark dark 1280x800 1
take build/pictures/scale2 light 2560x1440 2
