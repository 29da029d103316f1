#!/usr/bin/env bash
# Installs what building and testing need, from Debian 12's own packages. Does nothing where all of
# it is there. Every package that the project depends on is named here and nowhere else.
set -euo pipefail

packages=(
    # building
    cmake ninja-build g++
    # libraries
    qtbase5-dev qtbase5-dev-tools qt5-image-formats-plugins libnlopt-dev libnlopt-cxx-dev
    # scripts that vary exports for measurements, and draw the icons
    python3
    # packaging: finds out what the programs depend on
    dpkg-dev file
    # fonts for the labels in pictures
    fontconfig fonts-dejavu-core
    # tests: virtual X server, test library, independent maximum flow, formatting and static checks
    xvfb libgtest-dev libgmock-dev libboost-graph-dev clang-format clang-tidy
)

missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    [ "$state" = "install ok installed" ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

echo "Installing: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
fi
"${as_root[@]}" apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends \
    "${missing[@]}"
