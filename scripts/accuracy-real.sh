#!/usr/bin/env bash
# Segments real scans with known boundaries and prints how far the surfaces lie from them, in image
# rows; docs/accuracy.md tells which scans and what came out.
# scripts/accuracy-real.sh LINE OEDEMA DRUSEN [RESULTS]
# Each of the first three is a folder with export.xml and tables of boundaries, as
# tessera-compare reads them:
#   LINE    one B-scan, *.tsv with the columns ILM and BM
#   OEDEMA  11 B-scans, gt/*.g1.tsv and gt/*.g2.tsv by two graders, with the columns ILM, NFL_GCL,
#           IPL_INL, OPL_ONL, ISM_ISE and BM; number 6 is the central one
#   DRUSEN  neighbouring B-scans, gt/*.tsv with the columns RPE_MID and BM
# RESULTS is where results, pictures and comparisons are left; default: build/accuracy-real.
set -euo pipefail
if [ $# -lt 3 ] || [ $# -gt 4 ]; then
    sed -n '2,12s/^# \{0,1\}//p' "$0" >&2
    exit 2
fi
line=$(realpath "$1")
oedema=$(realpath "$2")
drusen=$(realpath "$3")
cd "$(dirname "$0")/.."
results=${4:-build/accuracy-real}

scripts/build.sh release
bin=build/release/bin
mkdir -p "$results"

segment() { # name, chain, export
    "$bin/tessera-segment" --quiet --force --chain "$2" --formats positions,thickness,etdrs,pictures \
        --out "$results/$1" "$3"
}

compare() { # heading, name, tables, comparison, options
    local heading=$1 name=$2 tables=$3 out=$results/$4
    shift 4
    "$bin/tessera-compare" "$results/$name"/export_* "$tables" --out "$out" "$@" >"$out.txt" \
        2>"$out.notes"
    printf '\n%s\n' "$heading"
    surfaces "$out.txt"
}

surfaces() { # text of a comparison: all B-scans together in rows
    awk '/^Surfaces/ { shown = 1; next } shown && /^$/ { exit } shown' "$1"
}

bscan_errors() { # number from 1, comparison: the mean |d| of each surface in rows
    awk -F , -v number="$1" '
        FNR == 1 { for (i = 1; i <= NF; ++i) column[$i] = i; next }
        $column["B-scan (from 1)"] == number {
            printf "%.2f ", $column["mean absolute difference (rows)"] }' "$2/bscans.csv"
}

oedema_columns=(--map NFL_GCL=GCL --map IPL_INL=INL --map OPL_ONL=ONL --map ISM_ISE=ISe)

segment line normal "$line/export.xml"
compare "Line scan of a healthy eye, normal chain" line "$line" compare-line

scripts/vary-export.py replace-fill "$oedema/export.xml" "$results/oedema-without-fill.export" \
    >/dev/null
scripts/vary-export.py one-bscan "$oedema/export.xml" 6 "$results/oedema-central.export"
segment oedema normal "$oedema/export.xml"
segment oedema-without-fill normal "$results/oedema-without-fill.export/export.xml"
segment oedema-central normal "$results/oedema-central.export/export.xml"
for grader in g1 g2; do
    for scan in oedema oedema-without-fill; do
        compare "Eye with macular oedema, $scan, normal chain, grader $grader" $scan "$oedema/gt" \
            "compare-$scan-$grader" --tables-b "*.$grader.tsv" "${oedema_columns[@]}"
    done
    compare "Its central B-scan alone, grader $grader" oedema-central "$oedema/gt" \
        "compare-oedema-central-$grader" --tables-b "*b06.$grader.tsv" "${oedema_columns[@]}"
done

# What a B-scan loses by its neighbours in the volume, and what it owes to them.
printf '\n%s\n' "Mean |d| in rows to grader g1, each B-scan in the volume and alone"
printf '%-8s' B-scan ILM alone GCL alone INL alone ONL alone ISe alone BM alone
printf '\n'
for number in {1..11}; do
    name=oedema-alone-$number
    scripts/vary-export.py one-bscan "$oedema/export.xml" "$number" "$results/$name.export"
    segment "$name" normal "$results/$name.export/export.xml"
    compare "" "$name" "$oedema/gt" "compare-$name" \
        --tables-b "*b$(printf %02d "$number").g1.tsv" "${oedema_columns[@]}" >/dev/null
    paste -d ' ' <(bscan_errors "$number" "$results/compare-oedema-g1") \
        <(bscan_errors 1 "$results/compare-$name") |
        awk -v number="$number" '{
            printf "%-8d", number
            for (i = 1; i <= NF / 2; ++i) printf "%-8s%-8s", $i, $(i + NF / 2)
            printf "\n" }'
done

printf '\n%s\n' "Grader g1 against grader g2, all B-scans"
"$bin/tessera-compare" "$oedema/gt" "$oedema/gt" --tables-a "*.g1.tsv" --tables-b "*.g2.tsv" \
    "${oedema_columns[@]}" >"$results/compare-graders.txt" 2>/dev/null
surfaces "$results/compare-graders.txt"

segment drusen drusen "$drusen/export.xml"
compare "Eye with drusen, drusen chain" drusen "$drusen/gt" compare-drusen \
    --map RPE_MID=IRPE

# The steps see the fill as black, so whatever stands in its place should change nothing.
compare "Eye with macular oedema, with its fill against the fill replaced" oedema \
    "$results"/oedema-without-fill/export_* compare-fill --same-places
