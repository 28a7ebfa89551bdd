#!/bin/bash
# Serves our GenICam descriptions through Aravis's fake GigE Vision camera on
# 127.0.0.1, for the viewer and for trying the tab by hand.
#
#   tools/fake-cameras.sh [start] [gen1|gen1-sfnc|gen2|gen3]   (default gen1)
#   tools/fake-cameras.sh status
#   tools/fake-cameras.sh stop
#
# GigE Vision control goes to UDP port 3956 of the camera's address, so
# 127.0.0.1 holds one fake camera at a time: starting a generation stops the
# one started before. The camera holds /tmp/pko-fake-gv-127.0.0.1.lock while it
# runs, the same lock the tests' fixture (tests/arv/FakeGvCamera) takes, so a
# camera started here makes those tests wait, and a running test makes start
# fail instead of stealing the port.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
genicam="$root/PelkoSDK/genicam"
state="${PKO_FAKE_CAMERA_STATE:-/tmp/pko-fake-cameras}"
lock=/tmp/pko-fake-gv-127.0.0.1.lock
binary=arv-fake-gv-camera-0.8

usage() {
    sed -n '5,7p' "${BASH_SOURCE[0]}" | sed 's/^# *//' >&2
    exit 2
}

describe() {  # generation -> "file serial"
    case "$1" in
        gen1) echo "gen1-line.xml PKO-GEN1" ;;
        gen1-sfnc) echo "gen1-sfnc.xml PKO-GEN1-SFNC" ;;
        gen2) echo "gen2-syncout.xml PKO-GEN2" ;;
        gen3) echo "gen3-lineout.xml PKO-GEN3" ;;
        *) return 1 ;;
    esac
}

# The pid is ours only while it still runs the fake camera.
alive() {
    [ -n "$1" ] && [ -r "/proc/$1/cmdline" ] && tr '\0' ' ' <"/proc/$1/cmdline" | grep -q "^$binary "
}

stop_all() {
    local file pid
    for file in "$state"/*.pid; do
        [ -e "$file" ] || continue
        pid=$(cat "$file")
        if alive "$pid"; then
            kill "$pid"
            for _ in $(seq 50); do
                alive "$pid" || break
                sleep 0.1
            done
            alive "$pid" && kill -9 "$pid"
            echo "stopped $(basename "$file" .pid) (pid $pid)"
        fi
        rm -f "$file"
    done
}

status() {
    local file pid found=0
    for file in "$state"/*.pid; do
        [ -e "$file" ] || continue
        pid=$(cat "$file")
        if alive "$pid"; then
            echo "$(basename "$file" .pid): pid $pid, $(tr '\0' ' ' <"/proc/$pid/cmdline")"
            found=1
        fi
    done
    [ $found = 1 ] || echo "no fake camera started by this script is running"
}

start() {
    local gen=$1 desc xml serial pid id
    desc=$(describe "$gen") || usage
    xml="$genicam/${desc% *}"
    serial=${desc#* }
    command -v "$binary" >/dev/null || { echo "$binary not found (Debian: aravis-tools-cli)" >&2; exit 1; }
    [ -r "$xml" ] || { echo "missing $xml" >&2; exit 1; }
    mkdir -p "$state"
    stop_all
    # The subshell takes the lock and becomes the camera, so the pid below is
    # the camera's and the lock lives exactly as long as it does.
    (
        exec 9>"$lock"
        flock -n 9 || { echo "another fake camera holds $lock (a test?)" >&2; exit 75; }
        exec "$binary" -i 127.0.0.1 -s "$serial" -g "$xml"
    ) >"$state/$gen.log" 2>&1 </dev/null &
    pid=$!
    echo "$pid" >"$state/$gen.pid"
    for _ in $(seq 50); do
        if ! kill -0 "$pid" 2>/dev/null; then
            echo "the fake camera exited: $(cat "$state/$gen.log")" >&2
            rm -f "$state/$gen.pid"
            exit 1
        fi
        if [ "$(arv-tool-0.8 -a 127.0.0.1 control DeviceID 2>/dev/null)" = "DeviceID = $serial" ]; then
            id=$(arv-tool-0.8 2>/dev/null | grep -- "-$serial (" | sed 's/ (.*//' || true)
            echo "$gen: id ${id:-Aravis-Fake-$serial}, serial $serial, pid $pid, address 127.0.0.1, file $xml"
            return 0
        fi
        sleep 0.1
    done
    echo "the fake camera did not answer on 127.0.0.1 within 5 s; stopping it" >&2
    kill "$pid" 2>/dev/null || true
    rm -f "$state/$gen.pid"
    exit 1
}

case "${1:-start}" in
    start) start "${2:-gen1}" ;;
    stop) stop_all ;;
    status) status ;;
    gen1 | gen1-sfnc | gen2 | gen3) start "$1" ;;
    -h | --help | help) usage ;;
    *) usage ;;
esac
