#!/usr/bin/env bash
# Builds the application where something of it is missing or out of date, and starts it with the
# arguments given: scripts/run.sh [ARGUMENT...]
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)

"$here/scripts/setup.sh"
(
    cd "$here"
    cmake --preset release >/dev/null
    cmake --build --preset release --target tessera
) >&2
exec "$here/build/release/bin/tessera" "$@"
