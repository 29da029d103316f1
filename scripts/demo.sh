#!/usr/bin/env bash
# From nothing to a segmented scan: installs what is missing, builds, writes a synthetic export and
# segments it. With paths of exports (or folders of them) as arguments it segments those instead.
# TESSERA_RESULTS names the folder for the results; default: tessera-results in the current folder.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
results=${TESSERA_RESULTS:-$PWD/tessera-results}

"$here/scripts/setup.sh"
"$here/scripts/build.sh" release
bin=$here/build/release/bin

inputs=("$@")
if [ ${#inputs[@]} -eq 0 ]; then
    phantom=$results/phantom
    echo "Writing a synthetic export of a healthy eye to $phantom"
    "$bin/tessera-phantom" --out "$phantom"
    inputs=("$phantom")
fi

"$bin/tessera-segment" --out "$results" "${inputs[@]}"

echo
echo "The results are in $results: one folder for each scan."
echo "  layer_*.csv      positions of each surface, in image rows: line 1 is B-scan 1"
echo "  thickness_*.csv  distances of neighbouring surfaces, in micrometres"
echo "  etdrs.csv        mean thickness for each ETDRS sector"
echo "  oct.mha, segmentation.mha   the scan and its labels as volumes"
echo "  pictures/        each B-scan with its surfaces, and the thickness map (enface.png)"
echo "Overview of all scans: $results/summary.csv"
