#!/usr/bin/env bash
# Measures what the user waits for: opening a store of 10,000 patients and its batch tab, paging,
# correcting a layer, measuring, and the repaints during a segmentation. Prints a line per figure
# with its limit, and ends with 1 if one is missed. Needs about 3 GB of memory.
# scripts/gui-bench.sh
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/build.sh release
settings=$(mktemp -d)
trap 'rm -rf "$settings"' EXIT
HOME="$settings" XDG_CONFIG_HOME="$settings" XDG_DATA_HOME="$settings" \
    scripts/with-display.sh build/release/bin/tessera-gui-bench
