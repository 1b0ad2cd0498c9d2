#!/usr/bin/env bash
# Builds a preset of CMakePresets.json. Does nothing if the build is up to date.
# Usage: tools/build.sh PRESET
# The compiler's output goes to build/PRESET/build.log; its end is shown when the build fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset=${1:?usage: tools/build.sh PRESET}
folder=build/$preset
log=$folder/build.log
mkdir -p "$folder"

fail() {
    tail -n 60 "$log" >&2
    echo "The build failed; all of its output is in $log" >&2
    exit 1
}

if [ ! -f "$folder/build.ninja" ]; then
    cmake --preset "$preset" >"$log" 2>&1 </dev/null || fail
fi
if ! ninja -C "$folder" -n 2>/dev/null | grep -q "no work to do"; then
    echo "Building $folder (the first time takes some minutes) …"
    cmake --build "$folder" >"$log" 2>&1 </dev/null || fail
fi
