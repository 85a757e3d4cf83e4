#!/bin/bash
# Tests packcheck and logcheck as programs: tests/console.sh PACKCHECK LOGCHECK [WINE], in a build folder.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 2 "$@"
packcheck=$1 logcheck=$2 wine=("${@:3}")
work=$(mktemp -d -p "$PWD" console.XXXXXX) failed=0
trap 'rm -rf "$work"' EXIT
fail() { echo "$*"; failed=1; }

printf 'Varnexa15_0_2_7' >"$work/record"
printf '[H]\n[Varnexa15_0_2_7]\n' >"$work/list"
printf '[H]\n[Varnexa15_0_2_3]\n' >"$work/older"
truncate -s 1G "$work/large"
long=$(printf 'a%.0s' {1..1012})
rule=$(printf '=%.0s' {1..52})
head="$rule\n"'Varnexa 15.0 Tavrel Utility File Version : 2.0.3.0\n'
head+='Varnexa 15.0 Tavrel Utility Date/Time : Saturday 22:30, November 21, 2026\n'
head+="Varnexa 15.0 Build Version : NA\n$rule\nApp  Mode: User, User Mode: NA, Invoke Mode: Patch verfication.\n"
offered='Update details found. Exit code 3.\n'
refused='Connect to the server not successful.\n Error : 2250 Please check\n'
later=${head/Saturday 22:30, November 21/Sunday 08:15, November 22}
mkdir -p "$work"/logs/pc{2..7} "$work/empty" "$work/other"
printf '%b' "$head$offered" | iconv -t UTF-16 >"$work/logs/pc1.LOG"
printf '%b' "$later$offered" | iconv -t UTF-16LE >"$work/logs/pc3/saved.txt"
for pc in 2 4 5 6 7; do printf '%b' "$head$offered$later$refused" >"$work/logs/pc$pc/a.log"; done
printf 'GET / HTTP/1.1\n' | tee "$work/logs/requests.log" >"$work/other/requests.log"

# expect PROGRAM STATUS PATTERN [ARGUMENT]…: runs the program on this standard input. The pattern is for its output and
# its messages.
expect() {
  local output result=0
  output=$("${wine[@]}" "$1" "${@:4}" 2>&1 | tr -d '\r') || result=$?
  # shellcheck disable=SC2053
  [[ $result == "$2" && $output == $3 ]] ||
    fail "${1##*/} ${*:4}: $result instead of $2, says: $output"
}

packcheck() { expect "$packcheck" "$@"; }
cd "$work"
packcheck 0 'Heading   H*Packs     1*from 15.0.0.0          offered, exit code 3*from 15.0.2.7          not offered*
No warnings.' list
packcheck 1 'Heading   \\x9B\\u202E*warning utf-16: the file*warning only-heading: *' - \
  < <(printf '\xff\xfe[\0\x9b\0\x2e\x20]\0')
packcheck 1 '{"heading":"\\\\xE9\\"\\u001b","packs":\["aaa*"],"dropped":\["P_1_23"],"newest":{"level":0,"build":0},*' \
  --json - < <(printf '[\xe9"\x1b]\n[%s]\n[P_1_23]' "$long")
packcheck 1 '{"heading":null,*"client":null,"table":\[{"from":"15.0.0.0","offered":false,*}],"warnings":\[{"code":"no-sections","name":"","text":*' \
  --json - <<<''
packcheck 0 '*from 15.0.0.0 *deleted*from 15.0.0.27 *from 15.0.1.0 *from 15.0.1.17 *from 15.0.2.0 *from 15.0.2.7 *' \
  --record=record -- list
packcheck 0 '*"client":{"product":"15.0.2.6","offered":true,*"log":\["Installer*"table":null*' \
  --json --record record --product 15.0.2.6 list
packcheck 1 '{"file":"list","heading":"H",*}
{"file":"-",*"code":"only-heading",*' --json list - <<<'[H]'
packcheck 0 '*_1_5
  ... and 1 more
Newest *' - < <(printf '[H]\n'; printf '[Varnexa15_0_1_%d]\n' {1..6})
packcheck 0 '*No warnings.' --ignore only-heading --ignore=duplicate - <<<'[H]'
packcheck 1 '*15.0.2.3 to 15.0.2.6  *offered, exit code 3 -> not offered, exit code 3

The new list has no warnings.' --compare list older
packcheck 1 '{"changes":\[{"from":"15.0.2.3","to":"15.0.2.6","old":{"offered":true,*},"new":{"offered":false,*}}],"warnings":0}' \
  --json --compare list older
packcheck 0 'No client gets another answer.

The new list has 1 warning; *' --compare list - <<<$'[H]\n[Varnexa15_0_2_07]'
packcheck 0 'packcheck [0-9]*.[0-9]*' --version
packcheck 0 'Says *Usage: packcheck*Exit status*' -h
packcheck 2 'packcheck: name a list*'
packcheck 2 'packcheck: *not expected: -V*' -V
packcheck 2 "packcheck: *15.0.2' is not a version*" --product 15.0.2 list
packcheck 2 "packcheck: *15.0.2.65536' is not a version*" --product 15.0.2.65536 list
packcheck 2 'packcheck: --ignore: nothing not in {*,duplicate,*' --ignore nothing list
packcheck 2 'packcheck: --compare takes two lists*' --compare list
packcheck 2 'packcheck: only one list or record can be standard input*' --record - -
packcheck 2 'packcheck: * is a folder*' empty
packcheck 2 'packcheck: cannot read *No warnings.' none list
packcheck 2 'packcheck: * is larger than 32 MiB*' large

# A Windows console has a code page of its own.
if ((${#wine[@]})); then
  [[ $(script -qec "${wine[*]} $packcheck ü" /dev/null) == *ü* ]] || fail "packcheck: no ü on a console"
fi

logcheck() { expect "$logcheck" "$@"; }
logcheck 0 'standard input
2026-11-21 22:30  started by the product, utility 2.0.3.0, product not read, ordinary user
  offered
    An update*' - < <(printf '%b' "$head$offered")
logcheck 1 '{"file":"-","time":"2026-11-21T22:30","mode":"start-up","utility":"2.0.3.0","product":null,"administrator":false,"checks":\[{"outcome":"failed","exit_code":null,"error":"2250","step":"Con*","advice":"*","notes":\[],"entries":\["Con*\\nError*"]}],"unknown":\["x"],"unknown_lines":1}' \
  --json - < <(printf '%b' "$head${refused}x\n")
logcheck 1 '*failed (2250)*1 line that no version of the utility writes:*"\\x1Bx"*' - < <(printf '%b' "$head$refused\033x\n")
logcheck 1 '*no run of the utility*' - <<<''
logcheck 1 '*unknown*no check*"foreign"*' - <<<foreign
# A folder has sub-folders, files in UTF-16 with or without a mark, and logs of other programs.
logcheck 1 'First seen        Last seen           Runs  Files  Outcome
2026-11-22 08:15  2026-11-22 08:15      5      5  failed (2250)
    5: *
      logs?pc2?a.log
      *
      logs?pc7?a.log
2026-11-21 22:30  2026-11-22 08:15      7      7  offered
    7: *
      logs?pc1.LOG
      *
      logs?pc5?a.log
      and 2 files more
12 runs in 7 files' --summary logs logs/pc3/../pc1.LOG
logcheck 1 '{"outcome":"failed","error":"2250","runs":1,"files":\["logs?pc2*a.log"],"first":"2026-11-22T08:15","last":"2026-11-22T08:15","advice":{"*":1}}
{"outcome":"offered",*"first":"2026-11-21T22:30","last":"2026-11-21T22:30",*' --summary --json logs/pc2
logcheck 0 '*2 runs in 2 files' --summary --last --outcome offered logs
logcheck 0 '*1 run in 1 file' --summary --since 2026-11-22 --outcome offered logs
logcheck 0 '' --since 2026-11-23 logs
logcheck 2 "logcheck: *'2026-02-32' is not a date*" --since 2026-02-32 logs
logcheck 2 'logcheck: *nothing not in {offered,*}*' --outcome nothing logs
logcheck 2 'logcheck: cannot read*offered*' none logs/pc1.LOG
logcheck 2 "logcheck: *'other' is a log of the utility*" other
logcheck 2 'logcheck: name a log*'
logcheck 0 'Tells*Exit status*: 0;*--summary*' --help
if ((${#wine[@]})); then
  # cmd leaves wildcards to the program.
  logcheck 0 'logs?pc1.LOG*offered*Install Updates in*menu entry opens.' 'logs\pc*.LOG'
else
  # A folder that cannot be listed is named, and all others are read; for root as well.
  mkdir -m 000 logs/pc0
  wine=(setpriv --bounding-set '-dac_override,-dac_read_search' --inh-caps '-dac_override,-dac_read_search')
  ((EUID == 0)) || wine=()
  logcheck 2 "logcheck: cannot list 'logs/pc0' (*12 runs in 7 files" --summary logs
  wine=()
fi

# A run is at most a screen, whatever happened in it.
lines=$(for i in {1..99}; do printf '%b' "Registry bit support mode  identification failed: \nError : 5\n" \
  "Product Updates Retry Attempted...\n$refused" "Server settings INI file copy failed.\nError : 5\nforeign $i\n"; done |
  "${wine[@]}" "$logcheck" - | wc -l) || true
((lines > 10 && lines <= 24)) || fail "logcheck: $lines lines for one run"
diff <("${wine[@]}" "$logcheck" --guide | tr -d '\r') <(sed '1,/^<!-- /d' "$repo/docs/log.md") ||
  fail "logcheck: docs/log.md is stale; ./dev log-guide writes it anew"
exit "$failed"
