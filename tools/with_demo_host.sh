#!/usr/bin/env bash
# Runs a program with the sample host at hand: the session bus starts the host as soon as somebody
# asks it for something. Everything ends with the program. The caller holds the demo's lock on
# descriptor 9; the program keeps it too, as long as it runs.
# Usage: tools/with_demo_host.sh FOLDER IDENTIFIER PROGRAM [ARGUMENT]…
# FOLDER is an absolute path: it has the container and gets the host's log, host.log. IDENTIFIER is
# the widget's, which chooses the host's name on the bus.
set -euo pipefail
demo=$1 widget=$2
shift 2
bin=$(cd "$(dirname "${BASH_SOURCE[0]}")/../build/release/bin" && pwd)

case "$widget" in
    it.tarno.quillet.beta8*) host=it.tarno.quillet.beta8 ;;
    it.tarno.quillet.beta10*) host=it.tarno.quillet.beta10 ;;
    it.tarno.quillet.beta11*) host=it.tarno.quillet.beta11 ;;
    it.tarno.quillet2*) host=it.tarno.quillet2 ;;
    *) host=it.tarno.quillet ;;
esac
# The user's own bus reads the services in this folder; it lasts until the session ends.
users_services=${XDG_RUNTIME_DIR:-}/dbus-1/services

bus_call() {
    dbus-send --session --print-reply --reply-timeout=2000 --dest=org.freedesktop.DBus \
        /org/freedesktop/DBus "org.freedesktop.DBus.$1" 2>/dev/null
}

# Whether the user's bus can serve: there is one, and neither it nor the desktop knows a mail
# application of that name. A click in the demo must never reach the user's own mail application.
users_bus_is_free() {
    [ -n "${XDG_RUNTIME_DIR:-}" ] || return 1
    [ -n "${DBUS_SESSION_BUS_ADDRESS:-}" ] || [ -S "$XDG_RUNTIME_DIR/bus" ] || return 1
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

# The bus starts programs with its own environment, but the host needs the panel's: the same
# display, and the same place for locks.
write_starter() {
    local variable
    {
        echo '#!/usr/bin/env bash'
        for variable in DISPLAY WAYLAND_DISPLAY XAUTHORITY XDG_RUNTIME_DIR TMPDIR LANG LC_ALL; do
            [ -z "${!variable+set}" ] || printf 'export %s=%q\n' "$variable" "${!variable}"
        done
        printf 'echo $$ >%q\n' "$demo/host.pid"
        printf 'exec %q run --container %q --identifier %q --bundle-identifier %q >>%q 2>&1\n' \
            "$bin/quillet-sample-host" "$demo/container" "$host" "$widget" "$demo/host.log"
    } >"$demo/start-host"
    chmod +x "$demo/start-host"
}

write_service() {
    mkdir -p "$1"
    printf '[D-BUS Service]\nName=%s\nExec="%s"\n' "$host" "$demo/start-host" >"$1/$host.service"
}

offer_on_users_bus() {
    users_bus_is_free && write_service "$users_services" && bus_call ReloadConfig >/dev/null &&
        bus_call ListActivatableNames | grep -qF "\"$host\""
}

# Starts a bus that knows nothing but the host.
offer_on_private_bus() {
    write_service "$demo/services"
    cat >"$demo/bus.conf" <<'END'
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <servicedir>services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
END
    exec 8< <(exec dbus-daemon --nofork --nopidfile --print-address=1 \
        --config-file="$demo/bus.conf" 2>>"$demo/host.log" 9>&-)
    bus=$!
    if ! read -r -u 8 DBUS_SESSION_BUS_ADDRESS; then
        cat "$demo/host.log" >&2
        exit 1
    fi
    export DBUS_SESSION_BUS_ADDRESS
    echo "$DBUS_SESSION_BUS_ADDRESS" >"$demo/bus"
}

stop_host() {
    local pid=
    [ ! -e "$demo/host.pid" ] || read -r pid <"$demo/host.pid" || true
    # The process number may belong to another program by now.
    if [ -n "$pid" ] && [[ "$(readlink "/proc/$pid/exe")" == "$bin/quillet-sample-host"* ]]; then
        kill "$pid" 2>/dev/null || true
        timeout 5 tail --pid="$pid" -f /dev/null || true
    fi
}

# Removes what this start left, or an earlier one that was killed.
clean_up() {
    rm -f "$demo/ready"
    if grep -qsF "\"$demo/start-host\"" "$users_services/$host.service"; then
        rm -f "$users_services/$host.service"
        bus_call ReloadConfig >/dev/null || true
    fi
    stop_host
    [ -z "${bus:-}" ] || kill "$bus" 2>/dev/null || true
    rm -f "$demo/host.pid" "$demo/bus"
}

# Runs the program until it ends. Signals that would end this script end the program instead.
run_to_its_end() {
    "$@" 8<&- &
    local program=$! status=0
    trap 'kill "$program" 2>/dev/null || true' INT TERM HUP
    wait "$program" || status=$?
    while kill -0 "$program" 2>/dev/null; do  # a signal cut the wait short
        status=0
        wait "$program" || status=$?
    done
    return "$status"
}

clean_up
trap clean_up EXIT
: >"$demo/host.log"
write_starter
if ! offer_on_users_bus; then
    echo "The demo runs on its own session bus: its clicks never reach your mail application."
    offer_on_private_bus
fi
echo "$widget" >"$demo/ready"  # from now on another start can toggle the panel
run_to_its_end "$@"
