#!/usr/bin/env bash
# Runs the tests of a built preset as on a machine without a desktop: no display, no session bus,
# no user's configuration. Usage: tools/run_tests.sh PRESET [CTEST-OPTION]…
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset=${1:?usage: tools/run_tests.sh PRESET [CTEST-OPTION]…}
shift

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS XDG_CONFIG_HOME XDG_DATA_HOME XDG_DATA_DIRS
unset "${!QUILLET_@}"
export HOME=$home XDG_RUNTIME_DIR=$home/runtime
export LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen
export LSAN_OPTIONS="suppressions=$PWD/tools/sanitizers/leaks.txt:print_suppressions=0"
export TSAN_OPTIONS="ignore_noninstrumented_modules=1:suppressions=$PWD/tools/sanitizers/threads.txt"
mkdir -m 700 "$XDG_RUNTIME_DIR"

ctest --preset "$preset" "$@"
