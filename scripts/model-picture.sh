#!/usr/bin/env bash
# Draws the trained model that is compiled in, its means and spreads, into docs/pictures/model.png.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset release >/dev/null
cmake --build --preset release --target TesseraDrawModel
QT_QPA_PLATFORM=offscreen build/release/libraries/OCTScan/model/tessera-draw-model docs/pictures/model.png
