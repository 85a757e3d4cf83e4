#!/bin/bash
# Runs one command inside an open room (scripts/sandbox.sh): ROOM FOLDER SECONDS LOCK COMMAND…
# LOCK is the descriptor that tells the keeper that somebody is here; the command must not inherit it.
set -u
room=$1 folder=$2 limit=$3 users=$4
shift 4
cd -- "$folder" || exit 2
export TAVREL_ROOM=$room

# The command's standard input is this process's own: a job in the background would get none.
timeout --foreground --kill-after=5 "$limit" "$@" <&0 {users}>&- &
command=$!
# shellcheck disable=SC2064
trap "kill $command 2>/dev/null" TERM INT HUP
code=0
wait "$command" || code=$?
if kill -0 "$command" 2>/dev/null; then
  wait "$command" || code=$?
fi
# What an ended command started may still be running: nobody is to find it in the room.
if ((code == 124 || code == 137 || code == 143)); then : >"$room/close-wish"; fi
exit "$code"
