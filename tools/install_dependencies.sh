#!/usr/bin/env bash
# Installs the missing Debian packages for the named purposes; see docs/dependencies.md.
# Usage: tools/install_dependencies.sh [build|panel|run|wayland|test|bench|fuzz|ci]…   (default: build)
# If no package is missing, it does nothing and prints nothing.
set -euo pipefail

packages_for() {
    case "$1" in
        build) echo g++ cmake ninja-build pkg-config qt6-base-dev libicu-dev libglib2.0-dev libgmime-3.0-dev libpng-dev libxcb1-dev libxcb-shape0-dev nlohmann-json3-dev ;;
        panel) echo dbus-daemon ;;
        run) echo fonts-inter fonts-noto-core fonts-wqy-microhei ;;
        wayland) echo qt6-wayland ;;
        test) echo libgtest-dev libgmock-dev libplist-dev dbus-daemon python3 python3-gi fonts-inter tzdata isync dovecot-imapd neomutt ;;
        bench) echo libplist-dev libpugixml-dev libglib2.0-dev dbus-daemon python3 ;;
        fuzz) echo clang libclang-rt-14-dev ;;
        ci) echo clang-format clang-tidy codespell python3 ;;
        *)
            echo "install_dependencies.sh: unknown purpose \"$1\"; use build, panel, run, wayland, test, bench, fuzz or ci" >&2
            exit 2
            ;;
    esac
}

is_installed() {
    [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

missing=()
for purpose in "${@:-build}"; do
    packages=$(packages_for "$purpose")
    for package in $packages; do
        if ! is_installed "$package" && [[ " ${missing[*]-} " != *" $package "* ]]; then
            missing+=("$package")
        fi
    done
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "These Debian packages are missing: ${missing[*]}" >&2
        echo "Install them as root: apt-get install ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi

echo "Installing Debian packages: ${missing[*]}"
apt_get() {
    ${as_root[@]+"${as_root[@]}"} env DEBIAN_FRONTEND=noninteractive apt-get -qq "$@" </dev/null
}
if ! output=$(apt_get update 2>&1 &&
    apt_get install --yes --no-install-recommends "${missing[@]}" 2>&1); then
    echo "$output" >&2
    echo "apt-get could not install: ${missing[*]}" >&2
    echo "Check the network and /etc/apt/sources.list (Debian 12), then try again." >&2
    exit 1
fi
