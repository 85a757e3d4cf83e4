#!/bin/bash
# Tests packcheck as a program: tests/packcheck.sh PROGRAM [ARGUMENT]…, in a build folder. A row: exit status;
# arguments, "@" is the folder of the files made below; standard input for printf, LONG is a name of 1012 characters;
# a pattern of the shell for standard output and standard error.
set -euo pipefail
work=$(mktemp -d packcheck.XXXXXX)
trap 'rm -rf "$work"' EXIT
printf 'Varnexa15_0_2_7' >"$work/record"
printf '[H]\n[Varnexa15_0_2_7]\n' >"$work/list"
printf '[H]\n[Varnexa15_0_2_3]\n' >"$work/older"
truncate -s 1G "$work/large"
long=$(printf 'a%.0s' {1..1012})

failed=0
while IFS=';' read -r status arguments input said; do
  # Each word of a row is one argument.
  # shellcheck disable=SC2059,SC2086
  output=$(printf "${input/LONG/$long}" | "$@" ${arguments//@/$work} 2>&1) && result=0 || result=$?
  # shellcheck disable=SC2053
  if [[ $result != "$status" || ${output//$'\r'/} != $said ]]; then
    printf 'packcheck %s: %s instead of %s, says:\n%s\n' "$arguments" "$result" "$status" "$output"
    failed=1
  fi
done <<'ROWS'
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
exit "$failed"
