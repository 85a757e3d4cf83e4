#!/bin/bash
# The publisher's check as a program: tests/packcheck.sh PROGRAM [ARGUMENT]…, in a build folder. A row: exit status;
# arguments; standard input, as printf has it; what is said, as a pattern of the shell.
set -euo pipefail
work=$(mktemp -d packcheck.XXXXXX)
trap 'rm -rf "$work"' EXIT
printf 'Varnexa15_0_2_7' >"$work/record"
printf '[H]\n[Varnexa15_0_2_7]\n' >"$work/list"
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
0;@/list;;*Packs     1*from 15.0.0.0          offered, exit code 3*from 15.0.2.7          not offered, exit code 3*matching*No warnings.
1;--json -;[\xe9"]\x1a\n[\tP_1_2];{"heading":"\\\\xE9\\"","packs":\["P_1_2"],"dropped":\[],"newest":{"level":1,"build":2},"client":null,"warnings":\[{"code":"not-ascii","name":"\\\\xE9\\"","text":"*"}]}
2;@;;packcheck: * is a folder*
2;@/none;;packcheck: cannot read *
0;--record @/record @/list;;*from 15.0.0.0 *deleted*from 15.0.0.27 *from 15.0.1.0 *from 15.0.1.17 *from 15.0.2.0 *from 15.0.2.7          not offered*
0;--json --record @/record --product 15.0.2.6 @/list;;{"heading":"H","packs":\["Varnexa15_0_2_7"],"dropped":\[],"newest":{"level":2,"build":7},"client":{"product":"15.0.2.6","offered":true,"exit_code":1,"record_deleted":true,"log":\["Installer update file exists in local.","Read installer update file completed.","Processed Installer update file exists in local.","Update details found. Exit code 1."]},"warnings":\[]}
1;--json -;[H]\n[LONG]\n[P_1_2345]\n[P_1_2];{"heading":"H","packs":\["aaa*"],"dropped":\["P_1_2345","P_1_2"],*"code":"beyond-limit","name":"P_1_2345",*
1;--json -;;{"heading":null,"packs":\[],"dropped":\[],"newest":{"level":0,"build":0},"client":null,"warnings":\[{"code":"no-sections","name":"",*
0;--version;;packcheck [0-9]*.[0-9]*
0;--help;;Says *Usage: packcheck*Exit status*
2;;;packcheck: LIST is required*
2;@/list @/record;;packcheck: *not expected*
2;--strict @/list;;packcheck: *not expected: --strict*
2;--product 15.0.2 @/list;;packcheck: *15.0.2' is not a version*
2;--product 15.0.2.65536 @/list;;packcheck: *15.0.2.65536' is not a version*
2;--record;;packcheck: --record*
2;--record - -;;packcheck: list and record*
2;@/large;;packcheck: * is larger than 32 MiB*
ROWS
exit "$failed"
