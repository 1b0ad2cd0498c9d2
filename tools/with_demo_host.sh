#!/usr/bin/env bash
# Runs a program beside the demo's mail host, on the user's session bus or on one of their own. Host
# and bus end with the program, and all of them with this script. The caller holds the demo's lock on
# descriptor 9; the program keeps it too, as long as it runs.
# Usage: tools/with_demo_host.sh FOLDER WIDGET HOST PROGRAM [ARGUMENT]…
# FOLDER is the one of tools/demo_host.sh and gets the host's log, host.log. WIDGET and HOST are the
# identifiers of the two programs.
set -euo pipefail
demo=$1 widget=$2 host=$3
shift 3
tools=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
host_process='' bus_process=''

bus_call() {
    local method=$1
    shift
    dbus-send --session --print-reply --reply-timeout=2000 --dest=org.freedesktop.DBus \
        /org/freedesktop/DBus "org.freedesktop.DBus.$method" "$@" 2>/dev/null
}

# Whether the user's bus can serve: there is one, and neither it nor the desktop knows a mail
# application of that name. A click in the demo must never reach the user's own mail application.
users_bus_is_free() {
    [ -n "${DBUS_SESSION_BUS_ADDRESS:-}" ] || [ -S "${XDG_RUNTIME_DIR:-}/bus" ] || return 1
    local names folder
    names=$(bus_call ListNames && bus_call ListActivatableNames) || return 1
    if grep -qF "\"$host\"" <<<"$names"; then
        return 1
    fi
    local IFS=:
    for folder in ${XDG_DATA_HOME:-${HOME:-}/.local/share} \
        ${XDG_DATA_DIRS:-/usr/local/share:/usr/share}; do
        [ ! -e "$folder/applications/$host.desktop" ] || return 1
    done
}

# Starts a bus that knows nothing but the host.
start_bus() {
    cat >"$demo/bus.conf" <<'END'
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
END
    exec 8< <(exec setpriv --pdeathsig TERM dbus-daemon --nofork --nopidfile --print-address=1 \
        --config-file="$demo/bus.conf" 2>>"$demo/host.log" 9>&-)
    bus_process=$!
    read -r -u 8 DBUS_SESSION_BUS_ADDRESS || return 1
    export DBUS_SESSION_BUS_ADDRESS
    echo "$DBUS_SESSION_BUS_ADDRESS" >"$demo/bus"
}

# Returns once the host can be asked; fails if it ends before.
start_host() {
    setpriv --pdeathsig TERM "$tools/demo_host.sh" "$demo" "$host" --log >>"$demo/host.log" 2>&1 \
        8<&- 9>&- &
    host_process=$!
    while kill -0 "$host_process" 2>/dev/null; do
        if bus_call GetConnectionUnixProcessID "string:$host" | grep -q " $host_process\$"; then
            return
        fi
        sleep 0.05
    done
    return 1
}

stop() {
    if [ -n "$1" ]; then
        kill "$1" 2>/dev/null || true
        wait "$1" || true
    fi
}

clean_up() {
    rm -f "$demo/ready" "$demo/bus"
    stop "$host_process"
    stop "$bus_process"
}

# Runs the program until it ends. Signals that would end this script end the program instead.
run_to_its_end() {
    setpriv --pdeathsig TERM "$@" 8<&- &
    local program=$! status=0
    trap 'kill "$program" 2>/dev/null || true' INT TERM HUP
    wait "$program" || status=$?
    while kill -0 "$program" 2>/dev/null; do  # a signal cut the wait short
        status=0
        wait "$program" || status=$?
    done
    return "$status"
}

trap clean_up EXIT
: >"$demo/host.log"
if ! users_bus_is_free || ! start_host; then
    echo "The demo runs on its own session bus: its clicks never reach your mail application."
    if ! start_bus || ! start_host; then
        cat "$demo/host.log" >&2
        exit 1
    fi
fi
echo "$widget" >"$demo/ready"  # from now on another start can toggle the panel
run_to_its_end "$@"
