#!/usr/bin/env bash
# Measures the cuts of a chain on a synthetic 512 by 496 by 49 scan: a row per step with its columns,
# nodes, edges, build and solve seconds and peak memory, and what looking for the device's fill and
# counting the quality figures take of it. Then solves the same cuts with plain
# Boost.Graph in the same run, for the ratio (and its memory, which is far higher).
# scripts/bench.sh [normal|drusen|mouse]   default: normal
set -euo pipefail
cd "$(dirname "$0")/.."
chain=${1:-normal}

scripts/build.sh release
bin=build/release/bin
export=build/bench/$chain
"$bin/tessera-phantom" --out "$export" --kind "$chain" >/dev/null

echo "Chain $chain:"
"$bin/tessera-bench" --chain "$chain" "$export/export.xml"
echo
echo "The same cuts, with Boost.Graph beside:"
"$bin/tessera-bench" --chain "$chain" --boost "$export/export.xml"
