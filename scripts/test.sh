#!/usr/bin/env bash
# Installs what is missing, checks the format, builds the optimised and the two sanitizer builds,
# and runs the tests of all three with one closing summary.
# scripts/test.sh release   builds and tests only the named presets.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh

presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(release address thread)

clang-format --dry-run --Werror $(git ls-files '*.cpp' '*.h')
scripts/build.sh "${presets[@]}"

# One run over the tests of every build, so that there is one summary.
mkdir -p build/all-tests
{
    for preset in "${presets[@]}"; do
        echo "subdirs(\"$PWD/build/$preset\")"
    done
} > build/all-tests/CTestTestfile.cmake
ctest --test-dir build/all-tests --output-on-failure --parallel "$(nproc)"
