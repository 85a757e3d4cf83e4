#!/bin/bash
# Prints the software bill of materials (CycloneDX 1.5, JSON) of a release:
#   packaging/bill-of-materials.sh MAKER VERSION COMMIT SECONDS FILE…
# MAKER supplies the files. SECONDS is the commit's time since 1970. A FILE in linux/ is a program for Linux.
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 5 "$@"
maker=$1 version=$2 commit=$3 seconds=$4
shift 4

# The libraries in the programs. A row has the name, the licence, what it is, a regular expression for the files that
# contain it, and a file of the Debian package that it comes from.
libraries() {
  local gcc='GPL-3.0-or-later WITH GCC-exception-3.1' row package
  cross() { i686-w64-mingw32-g++-posix -print-file-name="$1"; }
  while read -r row; do
    package=$(dpkg-query --search "$(realpath -- "${row##*|}")" | cut -d : -f 1)
    printf '%s|%s\n' "$row" "$(dpkg-query --show --showformat '${Package}|${Version}' "$package")"
  done <<END | jq -R 'split("|") | {
    type: "library", "bom-ref": .[0], supplier: {name: "Debian", url: ["https://www.debian.org/"]}, name: .[0],
    version: .[6], description: .[2], licenses: [{expression: .[1]}],
    purl: "pkg:deb/debian/\(.[5])@\(.[6] | @uri)", users: .[3]}'
libgcc|$gcc|compiler runtime|[.]exe$|$(cross libgcc.a)
libstdc++|$gcc|C++ standard library|[.]exe$|$(cross libstdc++.a)
mingw-w64-crt|ZPL-2.1|start-up code of the C runtime|[.]exe$|$(cross libmsvcrt.a)
winpthreads|MIT AND BSD-3-Clause|threads of the C++ standard library|[.]exe$|$(cross libwinpthread.a)
libgcc-linux|$gcc|compiler runtime for Linux|^linux/|$(g++ -print-file-name=libgcc.a)
libstdc++-linux|$gcc|C++ standard library for Linux|^linux/|$(g++ -print-file-name=libstdc++.a)
nlohmann-json|MIT|JSON|check([.]exe)?$|/usr/include/nlohmann/json.hpp
cli11|BSD-3-Clause|command lines|check([.]exe)?$|/usr/include/CLI/CLI.hpp
utfcpp|BSL-1.0|UTF-8|check([.]exe)?$|/usr/include/utf8.h
nsis|Zlib AND CPL-1.0|installer and uninstaller, with an LZMA decompressor|-setup[.]exe$|/usr/bin/makensis
END
}
files() {
  sha256sum -- "$@" | jq -R --arg maker "$maker" --arg version "$version" '.[66:] as $path | ($path | sub(".*/"; "")) as $name | {
    type: "file", "bom-ref": (if $path | startswith("/") then $name else $path end),
    supplier: {name: $maker}, name: $name, version: $version,
    hashes: [{alg: "SHA-256", content: .[:64]}]}'
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
