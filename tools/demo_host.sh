#!/usr/bin/env bash
# Runs the mail host on the demo's mail. All folders of the user and of the desktop lead into the
# demo, so that the host neither finds nor writes mail of the user's, nor starts a mail program.
# Usage: tools/demo_host.sh FOLDER IDENTIFIER [OPTION]…
# FOLDER is an absolute path: it has what tools/make_demo_mail.sh wrote, and gets the container.
# IDENTIFIER is the host's. Options go to quillet-mail-host.
set -euo pipefail
demo=$1 host=$2
shift 2
bin=$(cd "$(dirname "${BASH_SOURCE[0]}")/../build/release/bin" && pwd)
state=$demo/state
exec env -u NOTMUCH_CONFIG PATH="$bin:$PATH" HOME="$state" \
    XDG_CONFIG_HOME="$state/config" XDG_CONFIG_DIRS="$state/config" \
    XDG_DATA_HOME="$state/data" XDG_DATA_DIRS="$state/data" \
    XDG_STATE_HOME="$state" XDG_CACHE_HOME="$state/cache" \
    "$bin/quillet-mail-host" --config "$demo/mail-host.conf" --container "$demo/container" \
    --identifier "$host" "$@"
