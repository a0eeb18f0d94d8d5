# What a new user does with the installed package, as the user accueil. Sourced after root.sh. Needs $print_server_packages in
# the root.

print_server_packages=(cups-client cups-daemon)

start_display() {
    mkfifo "$work/display"
    Xvfb -displayfd 3 -screen 0 1024x768x24 -noreset -ac 3>"$work/display" >/dev/null 2>&1 &
    background+=($!)
    display=$(timeout 20 head -n 1 "$work/display")
    export DISPLAY=":$display"
}

# Its only printer writes what it gets to a file.
start_print_server() {
    sed -i '/^Listen localhost/d' "$root/etc/cups/cupsd.conf"
    install -m 700 /dev/stdin "$root/usr/lib/cups/backend/catch" <<'END'
#!/bin/sh
[ $# -eq 0 ] || cat "$6" >/tmp/printed
END
    inside cupsd -f &
    background+=($!)
    until [ "$(inside lpstat -r)" = 'scheduler is running' ]; do
        kill -0 "${background[-1]}"
    done
    inside lpadmin -p Accueil -E -v catch:/printed -m raw
    inside lpadmin -d Accueil
}

is_document() {
    [ "$(head -c 5 "$1")" = %PDF- ] && [[ $(pdftotext "$1" -) == *"Nom de l'assuré : SPECIMEN Hélène"* ]]
}
saves_the_specimen() {
    is_document "$root$(as_user pelmora --simulate --save "/home/accueil/$1")"
}
reads_the_specimen() {
    as_user pelmora --simulate --read | python3 -c 'import json, sys
assert "SPECIMEN" in json.dumps(json.load(sys.stdin))'
}
prints_the_specimen() {
    rm -f "$root/tmp/printed"
    as_user pelmora --simulate --print
    until [[ $(inside lpstat -W completed -u accueil) == *"Accueil-$1 "* ]]; do
        [[ $(inside lpstat -p Accueil) != *disabled* ]] || return 1
    done
    is_document "$root/tmp/printed"
}
# Reads and saves the card with a key, pressed until a file is there: it does nothing before the card service is bound.
saves_in_the_window() {
    local saved=$root/home/accueil/Documents/'Attestations Pelmora' pelmora
    rm -rf "$saved"
    as_user DISPLAY=":$display" pelmora --simulate &
    pelmora=$!
    timeout 60 xdotool search --sync --onlyvisible --name '^Pelmora par MORVEL$' windowfocus --sync >/dev/null
    timeout 60 bash -c 'until ls "$0"/*.pdf; do xdotool key ctrl+s sleep 0.2; done' "$saved" >/dev/null 2>&1
    [ -z "${screenshot:-}" ] || import -window root "$screenshot"
    kill "$(pgrep --parent "$pelmora" || echo "$pelmora")"
    wait "$pelmora"
    is_document "$saved/SPECIMEN Hélène.pdf"
}

# is_used NAME JOB: does each of these once. NAME is a folder for files, JOB is the number of the next print job.
is_used() {
    expect 'the attestation of the simulated card is saved' saves_the_specimen "$1"
    expect 'the simulated card is read for another program' reads_the_specimen
    expect 'its attestation is printed' prints_the_specimen "$2"
    expect 'the card is read and its attestation saved in the window' saves_in_the_window
}
