#!/bin/bash
# The software bill of materials (CycloneDX 1.5, JSON) of what is released:
#   packaging/bill-of-materials.sh VERSION COMMIT SECONDS FILE…
# SECONDS is the commit's time since 1970. What is linked into the programs comes with the cross compiler.
set -euo pipefail
version=$1 commit=$2 seconds=$3
shift 3

# Of the Debian package that a library of the cross compiler belongs to: name and version.
package_of() {
  local file
  file=$(realpath -- "$(i686-w64-mingw32-g++-posix -print-file-name="$1")")
  dpkg-query --show --showformat '${Package} ${Version}' "$(dpkg-query --search "$file" | cut -d : -f 1)"
}
# name, licence, what it is, package, version
library() {
  jq -n --arg name "$1" --arg licence "$2" --arg what "$3" --arg package "$4" --arg version "$5" '{
    type: "library", "bom-ref": $name, name: $name, version: $version, description: $what,
    licenses: [{expression: $licence}], purl: "pkg:deb/debian/\($package)@\($version | @uri)"}'
}
libraries() {
  local gcc='GPL-3.0-or-later WITH GCC-exception-3.1'
  # shellcheck disable=SC2046  # two words each
  {
    library libgcc "$gcc" "compiler runtime, linked in" $(package_of libgcc.a)
    library libstdc++ "$gcc" "C++ standard library, linked in" $(package_of libstdc++.a)
    library mingw-w64-crt ZPL-2.1 "C runtime's start-up code, linked in" $(package_of libmsvcrt.a)
    library winpthreads 'MIT AND BSD-3-Clause' "threads below the C++ standard library, linked in" \
      $(package_of libwinpthread.a)
    library nsis Zlib "program code of the installer and the uninstaller" nsis \
      $(dpkg-query --show --showformat '${Version}' nsis)
  }
}
files() {
  local file
  for file; do
    jq -n --arg name "${file##*/}" --arg version "$version" --arg sum "$(sha256sum <"$file" | cut -d ' ' -f 1)" '{
      type: "file", "bom-ref": $name, name: $name, version: $version, hashes: [{alg: "SHA-256", content: $sum}]}'
  done
}

# The number of a document is one of its commit's own, so that it is the same each time.
jq -n --arg version "$version" --arg commit "$commit" --arg time "$(date -u -d "@$seconds" +%FT%TZ)" \
  --arg number "${commit:0:8}-${commit:8:4}-5${commit:13:3}-8${commit:17:3}-${commit:20:12}" \
  --slurpfile libraries <(libraries) --slurpfile files <(files "$@") '{
  bomFormat: "CycloneDX", specVersion: "1.5", serialNumber: "urn:uuid:\($number)", version: 1,
  metadata: {timestamp: $time, component: {
    type: "application", "bom-ref": "release", name: "QRTTavrelUtility", version: $version,
    supplier: {name: "NORVIK Software Inc."}, properties: [{name: "commit", value: $commit}]}},
  components: ($files + $libraries),
  dependencies: ([{ref: "release", dependsOn: [$files[].name]}] + [$files[] | {ref: .name, dependsOn: [
    (.name | endswith("-setup.exe")) as $setup | $libraries[].name | select($setup or . != "nsis")]}])}'
