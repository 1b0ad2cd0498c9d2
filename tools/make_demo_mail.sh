#!/usr/bin/env bash
# Makes the mail of the demo: Maildir folders with the messages of tools/demo_mail.txt, whose dates
# count back from now, and a configuration of quillet-mail-host that names them.
# Usage: tools/make_demo_mail.sh FOLDER
# Writes FOLDER/mail, which must not be there, and FOLDER/mail-host.conf. FOLDER is an absolute path.
set -euo pipefail
export LC_ALL=C  # days and months in a header are English
umask 077
tools=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder=$1
# The messages take their place together, so an interrupted start leaves none.
new=$folder/mail.new
number=0
printf -v now '%(%s)T' -1
printf -v day '%(%F)T' "$now"
since_midnight=$((now - $(date -d "$day" +%s)))

# The moment that an age stands for, in seconds since 1970.
moment_of() {
    local hundredths=$((10#${1/./}))
    if [ "$hundredths" -lt 100 ]; then
        echo $((now - hundredths * since_midnight / 100))
    else
        echo $((now - hundredths * 864))
    fi
}

# Writes the message whose fields the line "==" gave, with the text that came since.
write_message() {
    [ -n "$account" ] || return 0
    local date kind=plain flags=S place=cur name header
    number=$((number + 1))
    date=$(moment_of "$age")
    [[ "$text" != "<"* ]] || kind=html
    [[ "$state" != new* ]] || flags=
    [[ "$state" != *+ ]] || flags=F$flags
    [ "$state" != new ] || place=new
    name=$new/$account/$mailbox/$place/$date.$number.demo
    [ $place = new ] || name+=:2,$flags
    mkdir -p "$new/$account/$mailbox/"{cur,new,tmp}
    printf -v header '%(%a, %d %b %Y %H:%M:%S %z)T' "$date"
    {
        printf 'From: "%s" <%s>\nTo: %s\n' "$sender" "$address" "$account"
        [ -z "$subject" ] || printf 'Subject: %s\n' "$subject"
        printf 'Date: %s\nMessage-ID: <%s.%s@demo.example>\n' "$header" "$date" "$number"
        printf 'MIME-Version: 1.0\nContent-Type: text/%s; charset=utf-8\n' $kind
        printf 'Content-Transfer-Encoding: 8bit\n\n%s' "$text"
    } >"$name"
    touch -d "@$date" "$name"
}

rm -rf "$new"
account=
while IFS= read -r line; do
    if [[ "$line" == "== "* ]]; then
        write_message
        IFS='|' read -r account mailbox state age sender address subject <<<"${line#== }"
        text=
    else
        text+=$line$'\n'
    fi
done <"$tools/demo_mail.txt"
write_message

escaped=${folder//\\/\\\\}
escaped=${escaped//\"/\\\"}
cat >"$folder/mail-host.conf" <<END
# The accounts of the demo, for quillet-mail-host.
[general]
open = quillet-message {file}

[account anna.berg@example.com]
name = Anna Berg
maildir = "$escaped/mail/anna.berg@example.com"

[account studio@lindqvist.example]
name = Lindqvist & Berg
maildir = "$escaped/mail/studio@lindqvist.example"
END
mv -T "$new" "$folder/mail"
