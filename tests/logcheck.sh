#!/bin/bash
# The reader of logs as a program: tests/logcheck.sh PROGRAM [ARGUMENT]…, in a build folder. A row: exit status;
# arguments; standard input, as printf has it; what is said, as a pattern of the shell. HEAD and TAIL: rest of a log.
set -euo pipefail
work=$(mktemp -d logcheck.XXXXXX)
trap 'rm -rf "$work"' EXIT
rule=$(printf '=%.0s' {1..52})
head="$rule\n"'Varnexa 15.0 Tavrel Utility File Version : 2.0.3.0\n'
head+='Varnexa 15.0 Tavrel Utility Date/Time : Saturday 22:30, November 21, 2026\n'
head+="Varnexa 15.0 Build Version : NA\n$rule\nApp  Mode: User, User Mode: NA, Invoke Mode: Regular.\n"
offered='Update details found. Exit code 3.\n'
failed='Connect to the server not successful.\n Error : 2250 Please check\n'
mkdir -p "$work/logs/pc2" "$work/empty"
printf '%b' "$head$offered" | iconv -t UTF-16 >"$work/logs/pc1.LOG"
printf '%b' "$head$offered$head$failed" >"$work/logs/pc2/a.log"
printf 'GET / HTTP/1.1\n' >"$work/logs/requests.log"
json='{"file":"-","time":"2026-11-21T22:30","mode":"regular","utility":"2.0.3.0","product":null,"administrator":false'
check='{"outcome":"failed","exit_code":null,"error":"2250","step":"Connect to the server not successful.","advice":"*."'
check+=',"entries":\["Connect to the server not successful."," Error : 2250 Please check"]}'

failed_rows=0
while IFS=';' read -r status arguments input said; do
  input=${input//HEAD/$head} input=${input//OFFERED/$offered} input=${input//FAILED/$failed}
  # Each word of a row is one argument.
  # shellcheck disable=SC2059,SC2086
  output=$(printf "$input" | "$@" ${arguments//@/$work} 2>&1) && result=0 || result=$?
  said=${said/JSON/$json} said=${said/CHECK/$check}
  # shellcheck disable=SC2053
  if [[ $result != "$status" || ${output//$'\r'/} != $said ]]; then
    printf 'logcheck %s: %s instead of %s, says:\n%s\n' "$arguments" "$result" "$status" "$output"
    failed_rows=1
  fi
done <<'ROWS'
0;-;HEADOFFERED;standard input*2026-11-21 22:30  started by the user, utility 2.0.3.0, product not read, ordinary user*offered*An update*
1;--json -;HEADFAILED\033x\n;JSON,"checks":\[CHECK],"unknown":\["\\u001bx"]}
1;-;HEADFAILED\033x\n;*failed (2250)*1 line that no version of the utility writes:*"\\x1Bx"*
0;@/logs/pc1.LOG;;*.LOG*offered*
1;-;;*no run of the utility*
1;-;foreign\n;*unknown*no check*"foreign"*
1;--summary @/logs;;First seen*2026-11-21 22:30  2026-11-21 22:30      1      1  failed (2250)*1: *      2      2  offered*3 runs in 2 files
1;--summary --json @/logs/pc2;;{"outcome":"failed","error":"2250","runs":1,"files":1,"first":"2026-*","last":"*","advice":{"*":1}}*{"outcome":"offered",*
2;@/none @/logs/pc1.LOG;;logcheck: cannot read*offered*
2;@/empty;;logcheck: no file in*
2;;;logcheck: name a log*
2;--strict;;logcheck: *--strict*
0;--help;;Tells*Exit status: 0;*--summary*
ROWS

# A run is at most a screen, whatever happened in it.
lines=$(for i in {1..99}; do printf '%b' "Registry bit support mode  identification failed: \nError : 5\n" \
  "Product Updates Retry Attempted...\n$failed" "Server settings INI file copy failed.\nError : 5\nforeign $i\n"; done |
  "$@" - | wc -l) || true
((lines > 10 && lines <= 24)) || { echo "logcheck: $lines lines for one run"; failed_rows=1; }
# The guide is the table's.
diff <("$@" --guide | tr -d '\r') "$(dirname -- "${BASH_SOURCE[0]}")/../docs/log.md" ||
  { echo "logcheck: docs/log.md is stale; ./dev log-guide writes it anew"; failed_rows=1; }
exit "$failed_rows"
