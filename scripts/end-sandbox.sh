#!/bin/bash
# Ends a sandbox that has no process namespace: end-sandbox.sh PID FILE FOLDER
# Waits until the sandbox's first process, PID, has ended in whatever way. Then it ends every process that has
# FILE open, which all processes of the sandbox inherit, and removes the sandbox's temporary FOLDER.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
check_usage 3 "$@"

tail --pid="$1" --sleep-interval=0.1 --follow /dev/null
# Xvfb removes its socket when it is asked to end.
if fuser --silent --kill -TERM "$2"; then sleep 0.5; fi
for ((tries = 0; tries < 100; ++tries)); do
  fuser --silent --kill -KILL "$2" || break
  sleep 0.1
done
rm -rf -- "$3"
