#!/usr/bin/env bash
# Builds presets: scripts/build.sh [release|debug|address|thread]...   Default: release.
# Warnings are errors when TESSERA_WARNINGS_AS_ERRORS=ON is in the environment.
set -euo pipefail
cd "$(dirname "$0")/.."

presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(release)
for preset in "${presets[@]}"; do
    cmake --preset "$preset" \
        -DTESSERA_WARNINGS_AS_ERRORS="${TESSERA_WARNINGS_AS_ERRORS:-OFF}" >/dev/null
    cmake --build --preset "$preset"
done
