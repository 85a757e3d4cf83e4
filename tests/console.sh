#!/bin/bash
# Tests packcheck and logcheck as programs: tests/console.sh PACKCHECK LOGCHECK [WINE], in a build folder.
set -euo pipefail
packcheck=$1 logcheck=$2 wine=("${@:3}")
work=$(mktemp -d console.XXXXXX) failed=0
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
mkdir -p "$work/logs/pc2" "$work/empty"
printf '%b' "$head$offered" | iconv -t UTF-16 >"$work/logs/pc1.LOG"
printf '%b' "$head$offered$head$refused" >"$work/logs/pc2/a.log"
printf 'GET / HTTP/1.1\n' >"$work/logs/requests.log"

# check PROGRAM: runs the program for each row of standard input. A row: exit status; arguments, "@" is the folder
# of the files above; standard input for printf, the names in capitals are the texts above; a pattern of the shell for
# standard output and standard error.
check() {
  local program=$1 status arguments input said output result
  while IFS=';' read -r status arguments input said; do
    input=${input/LONG/$long} input=${input/HEAD/$head} input=${input/OFFERED/$offered} input=${input/REFUSED/$refused}
    # Each word of a row is one argument.
    # shellcheck disable=SC2059,SC2086
    output=$(printf "$input" | "${wine[@]}" "$program" ${arguments//@/$work} 2>&1) && result=0 || result=$?
    # shellcheck disable=SC2053
    [[ $result == "$status" && ${output//$'\r'/} == $said ]] ||
      fail "${program##*/} $arguments: $result instead of $status, says: $output"
  done
}

check "$packcheck" <<'ROWS'
0;@/list;;Heading   H*Packs     1*from 15.0.0.0          offered, exit code 3*from 15.0.2.7          not offered*No warnings.
1;-;\xff\xfe[\0\x9b\0\x2e\x20]\0;Heading   \\x9B\\u202E*warning only-heading: *
1;--json -;[\xe9"\x1b]\n[LONG]\n[P_1_23];{"heading":"\\\\xE9\\"\\u001b","packs":\["aaa*"],"dropped":\["P_1_23"],"newest":*
1;--json -;;{"heading":null,*"client":null,"table":\[{"from":"15.0.0.0","offered":false,*}],"warnings":\[{"code":"no-sections","name":"","text":*
0;--record=@/record -- @/list;;*from 15.0.0.0 *deleted*from 15.0.0.27 *from 15.0.1.0 *from 15.0.1.17 *from 15.0.2.0 *from 15.0.2.7 *
0;--json --record @/record --product 15.0.2.6 @/list;;*"client":{"product":"15.0.2.6","offered":true,*"log":\["Installer*"table":null*
1;--json @/list @/list -;[H];{"file":"*list","heading":"H",*}*{"file":"*list",*}*{"file":"-",*"code":"only-heading",*
0;--ignore only-heading --ignore=duplicate -;[H];*No warnings.
1;--compare @/list @/older;;*15.0.2.3 to 15.0.2.6  *offered, exit code 3 -> not offered, exit code 3
0;--json --compare @/list @/list;;{"changes":\[]}
0;--version;;packcheck [0-9]*.[0-9]*
0;-h;;Says *Usage: packcheck*Exit status*
2;;;packcheck: LIST is required*
2;--strict @/list;;packcheck: *not expected: --strict*
2;--product 15.0.2 @/list;;packcheck: *15.0.2' is not a version*
2;--product 15.0.2.65536 @/list;;packcheck: *15.0.2.65536' is not a version*
2;--ignore nothing @/list;;packcheck: *no warning has the code 'nothing'*
2;--compare @/list;;packcheck: --compare takes two lists*
2;--record - -;;packcheck: only one list or record can be standard input*
2;@;;packcheck: * is a folder*
2;@/none @/list;;packcheck: cannot read *No warnings.
2;@/large;;packcheck: * is larger than 32 MiB*
ROWS

check "$logcheck" <<'ROWS'
0;-;HEADOFFERED;standard input*2026-11-21 22:30  started by the product, utility 2.0.3.0, product not read, ordinary user*offered*An update*
1;--json -;HEADREFUSED;{"file":"-","time":"2026-11-21T22:30","mode":"patch","utility":"2.0.3.0","product":null,"administrator":false,"checks":*
1;--json -;REFUSEDx\n;*:\[{"outcome":"failed","exit_code":null,"error":"2250","step":"Con*","advice":"*","entries":\["Con*"," Err*"]}],"unknown":\["x"]}
1;-;HEADREFUSED\033x\n;*failed (2250)*1 line that no version of the utility writes:*"\\x1Bx"*
0;@/logs/pc1.LOG;;*.LOG*offered*
1;-;;*no run of the utility*
1;-;foreign\n;*unknown*no check*"foreign"*
1;--summary @/logs;;First seen*2026-11-21 22:30  2026-11-21 22:30      1      1  failed (2250)*1: *      2      2  offered*3 runs in 2 files
1;--summary --json @/logs/pc2;;{"outcome":"failed","error":"2250","runs":1,"files":1,"first":"2026-*","last":"*","advice":{"*":1}}*{"outcome":"offered",*
2;@/none @/logs/pc1.LOG;;logcheck: cannot read*offered*
2;@/empty;;logcheck: no file in*
2;;;logcheck: name a log*
0;--help;;Tells*Exit status: 0;*--summary*
ROWS

# A run is at most a screen, whatever happened in it.
lines=$(for i in {1..99}; do printf '%b' "Registry bit support mode  identification failed: \nError : 5\n" \
  "Product Updates Retry Attempted...\n$refused" "Server settings INI file copy failed.\nError : 5\nforeign $i\n"; done |
  "${wine[@]}" "$logcheck" - | wc -l) || true
((lines > 10 && lines <= 24)) || fail "logcheck: $lines lines for one run"
diff <("${wine[@]}" "$logcheck" --guide | tr -d '\r') "${0%/*}/../docs/log.md" ||
  fail "logcheck: docs/log.md is stale; ./dev log-guide writes it anew"
exit "$failed"
