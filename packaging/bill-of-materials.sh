#!/bin/bash
# Prints the software bill of materials (CycloneDX 1.5, JSON) of a release:
#   packaging/bill-of-materials.sh MAKER VERSION COMMIT SECONDS FILE…
# MAKER supplies the files. SECONDS is the commit's time since 1970. A FILE in linux/ is a program for Linux.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 5 "$@"
maker=$1 version=$2 commit=$3 seconds=$4
shift 4

# Prints the Debian package of a file of a compiler, and its version: package_of COMPILER FILE
package_of() {
  local file
  file=$(realpath -- "$("$1" -print-file-name="$2")")
  dpkg-query --show --showformat '${Package} ${Version}' "$(dpkg-query --search "$file" | cut -d : -f 1)"
}
version_of() { dpkg-query --show --showformat '${Version}' "$1"; }
# library NAME LICENCE DESCRIPTION USERS PACKAGE VERSION; USERS: a regular expression for the files that contain it
library() {
  jq -n --arg name "$1" --arg licence "$2" --arg what "$3" --arg users "$4" --arg package "$5" --arg version "$6" '{
    type: "library", "bom-ref": $name, supplier: {name: "Debian", url: ["https://www.debian.org/"]}, name: $name,
    version: $version, description: $what, licenses: [{expression: $licence}],
    purl: "pkg:deb/debian/\($package)@\($version | @uri)", users: $users}'
}
libraries() {
  local gcc='GPL-3.0-or-later WITH GCC-exception-3.1' cross=i686-w64-mingw32-g++-posix
  # shellcheck disable=SC2046  # two words each
  {
    library libgcc "$gcc" "compiler runtime" '[.]exe$' $(package_of $cross libgcc.a)
    library libstdc++ "$gcc" "C++ standard library" '[.]exe$' $(package_of $cross libstdc++.a)
    library mingw-w64-crt ZPL-2.1 "start-up code of the C runtime" '[.]exe$' $(package_of $cross libmsvcrt.a)
    library winpthreads 'MIT AND BSD-3-Clause' "threads of the C++ standard library" '[.]exe$' \
      $(package_of $cross libwinpthread.a)
    library libgcc-linux "$gcc" "compiler runtime for Linux" '^linux/' $(package_of g++ libgcc.a)
    library libstdc++-linux "$gcc" "C++ standard library for Linux" '^linux/' $(package_of g++ libstdc++.a)
    library nlohmann-json MIT "JSON" 'check([.]exe)?$' nlohmann-json3-dev "$(version_of nlohmann-json3-dev)"
    library cli11 BSD-3-Clause "command lines" 'check([.]exe)?$' libcli11-dev "$(version_of libcli11-dev)"
    library utfcpp BSL-1.0 "UTF-8" 'check([.]exe)?$' libutfcpp-dev "$(version_of libutfcpp-dev)"
    library nsis 'Zlib AND CPL-1.0' "installer and uninstaller, with an LZMA decompressor" '-setup[.]exe$' \
      nsis "$(version_of nsis)"
  }
}
files() {
  local file
  for file; do
    jq -n --arg name "${file#"${file%/*}/"}" --arg path "$file" --arg maker "$maker" --arg version "$version" \
      --arg sum "$(sha256sum <"$file" | cut -d ' ' -f 1)" '{
      type: "file", "bom-ref": (if $path | startswith("/") then $name else $path end),
      supplier: {name: $maker}, name: $name, version: $version,
      hashes: [{alg: "SHA-256", content: $sum}]}'
  done
}

# The document's number is derived from the commit, so that it can be reproduced.
jq -n --arg maker "$maker" --arg version "$version" --arg commit "$commit" --arg time "$(date -u -d "@$seconds" +%FT%TZ)" \
  --arg number "${commit:0:8}-${commit:8:4}-5${commit:13:3}-8${commit:17:3}-${commit:20:12}" \
  --slurpfile libraries <(libraries) --slurpfile files <(files "$@") '{
  bomFormat: "CycloneDX", specVersion: "1.5", serialNumber: "urn:uuid:\($number)", version: 1,
  metadata: {
    timestamp: $time,
    component: {
      type: "application", "bom-ref": "release", name: "QRTTavrelUtility", version: $version,
      supplier: {name: $maker}, properties: [{name: "commit", value: $commit}]},
    supplier: {name: $maker}},
  components: ($files + ($libraries | map(del(.users)))),
  dependencies: ([{ref: "release", dependsOn: [$files[]."bom-ref"]}] + [$files[]."bom-ref" as $file | {
    ref: $file, dependsOn: [$libraries[] | select(.users as $users | $file | test($users)) | ."bom-ref"]}])}'
