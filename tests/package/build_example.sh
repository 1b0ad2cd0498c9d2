#!/usr/bin/env bash
# Installs the hand-off library of a build into a folder of its own, builds examples/extension with
# what lies there and nothing else, and runs it. Usage: build_example.sh BUILD CXX-COMPILER
set -euo pipefail
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
build=$1
compiler=$2

prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

fail() {
    echo "$1" >&2
    exit 1
}

cmake --install "$build" --component handoff --prefix "$prefix" >/dev/null
# Away from the sources, so that no header is found there.
cp -r "$source/examples/extension" "$prefix/source"
cmake -G Ninja -S "$prefix/source" -B "$prefix/build" -DCMAKE_PREFIX_PATH="$prefix" \
      -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF >/dev/null
cmake --build "$prefix/build"

# No installed header includes one that is not installed.
headers=$prefix/include/quillet
(cd "$headers" && find . -name '*.h' -printf '#include "%P"\n') | sort >"$prefix/headers.cpp"
[ -s "$prefix/headers.cpp" ] || fail "no header was installed"
"$compiler" -std=c++20 -fsyntax-only -I "$headers" "$prefix/headers.cpp"

printf 'one' >"$prefix/note.txt"
export QUILLET_CONTAINER=$prefix/container
url=$("$prefix/build/quillet-extension" share "Two words" "$prefix/note.txt" 2>"$prefix/log") ||
    fail "the example failed: $(cat "$prefix/log")"
staged=$QUILLET_CONTAINER/SharedData/share/note.txt
[ "$(cat "$staged")" = one ] || fail "nothing was staged at $staged"
[[ $url == "quillet://compose?subject=Two%20words&attachment_0="*note.txt ]] ||
    fail "an unexpected URL: $url"
! "$prefix/build/quillet-extension" share Subject "$prefix/missing" 2>/dev/null ||
    fail "a missing file was taken for a staged one"
