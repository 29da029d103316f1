#!/usr/bin/env bash
# Segments synthetic scans with known surfaces and prints, for each surface, the mean absolute error
# and the bias in image rows, and the largest error.
# scripts/accuracy.sh [normal|normal-left|drusen|mouse]...   default: all; normal-left is a left eye
set -euo pipefail
cd "$(dirname "$0")/.."
kinds=("$@")
[ ${#kinds[@]} -gt 0 ] || kinds=(normal normal-left drusen mouse)

scripts/build.sh release
bin=build/release/bin
work=build/accuracy
for kind in "${kinds[@]}"; do
    chain=${kind%-left}
    eye=R
    [ "$chain" = "$kind" ] || eye=L
    "$bin/tessera-phantom" --out "$work/$kind" --kind "$chain" --eye $eye >/dev/null
    "$bin/tessera-segment" --quiet --force --chain "$chain" --formats positions \
        --out "$work/results-$kind" "$work/$kind"
    printf '%-12s %-6s %8s %8s %8s\n' "$kind" surface error bias largest
    for truth in "$work/$kind"/truth_*.csv; do
        surface=$(basename "$truth" .csv)
        surface=${surface#truth_}
        found=$(echo "$work/results-$kind"/*/"layer_$surface.csv")
        [ -f "$found" ] || continue
        paste -d '\n' "$truth" "$found" | awk -F '\t' -v surface="$surface" '
            NR % 2 == 1 { count = split($0, truth, "\t"); next }
            { for (i = 1; i < count; ++i) {
                difference = $i - truth[i]; n++; bias += difference
                size = difference < 0 ? -difference : difference
                error += size; if (size > largest) largest = size } }
            END { printf "%-12s %-6s %8.3f %8.3f %8d\n", "", surface, error / n, bias / n, largest }'
    done
done
