#!/bin/bash
# Signing, and the refusals that keep a wrong release from going out: release.sh BUILD-TREE
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../../scripts/lib.sh"
check_usage 1 "$@"
program=$1/QRTTavrelUtility.exe work=$(mktemp -d) failed=0
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$work"' EXIT
cd "$work"
fail() { echo "release: $*" >&2; failed=1; }

certificate() {
  openssl req -x509 -newkey rsa:2048 -nodes -keyout "$1.key" -out "$1.pem" -days 2 -subj "/CN=Throw-away $1" \
    -addext "extendedKeyUsage=critical,$2" 2>>openssl.log
}
certificate signer codeSigning
certificate stamper timeStamping
openssl pkcs12 -export -inkey signer.key -in signer.pem -passout pass:secret -out signer.p12
echo secret >password
printf '%s\n' '[tsa]' default_tsa=t '[t]' serial=serial default_policy=1.2.3 digests=sha256 signer_digest=sha256 >stamper.conf
echo 01 >serial
# A time-stamp server on a free port of 127.0.0.1, which it prints.
perl -MIO::Socket::INET -e '
  $| = 1;
  my $server = IO::Socket::INET->new(Listen => 5, LocalAddr => "127.0.0.1") or die;
  print $server->sockport, "\n";
  while (my $client = $server->accept) {
    my ($length, $query);
    while (<$client>) { $length = $1 if /^Content-Length: (\d+)/i; last if /^\r$/ }
    read $client, $query, $length;
    open my $file, ">", "query"; print $file $query; close $file;
    my $reply = `openssl ts -reply -config stamper.conf -queryfile query -signer stamper.pem -inkey stamper.key`;
    print $client "HTTP/1.0 200 OK\r\nContent-Type: application/timestamp-reply\r\n\r\n$reply";
  }' >port 2>stamper.log &
wait_until 10 test -s port
export TAVREL_SIGN_PASSWORD_FILE=$work/password TAVREL_SIGN_CERTIFICATE=$work/signer.p12
TAVREL_SIGN_TIMESTAMP=http://127.0.0.1:$(<port)/
export TAVREL_SIGN_TIMESTAMP
# change of the environment | words of the refusal
while IFS='|' read -r change words; do
  cp "$program" unsigned.exe
  if env "$change" "$repo/packaging/sign.sh" unsigned.exe 2>sign.log; then fail "signs with $change"; fi
  grep -q "$words" sign.log && cmp "$program" unsigned.exe || { cat sign.log >&2; fail "$change"; }
done <<END
TAVREL_SIGN_CERTIFICATE=$work/password|needs TAVREL_SIGN_MODULE
TAVREL_SIGN_TIMESTAMP=|names no time-stamp server
TAVREL_SIGN_TIMESTAMP=http://127.0.0.1:1/|Failed
END

# What a publisher notices: a program that is not hardened, a zip that depends on the machine, wrong sums, a draft or an
# unsigned release that does not say so, a program that is not in the bill of materials.
# The flags of the file header are 0x16 bytes after the start of the PE header, whose offset is at 0x3c; the other two
# are 0x5e after it. Flags to clear or set: offset, bytes.
start=$(od -An -tu4 -j60 -N4 "$program")
while read -r offset bytes; do
  cp "$program" soft.exe
  # shellcheck disable=SC2059  # the bytes are escapes
  printf "$bytes" | dd of=soft.exe bs=1 seek=$((start + offset)) conv=notrunc status=none
  if "$repo/packaging/hardened.sh" soft.exe 2>/dev/null; then fail "passes as hardened: $offset $bytes"; fi
done <<'END'
0x5e \x00\x81
0x5e \x40\x80
0x5e \x40\x01
0x16 \x03
END

# Wine keeps no access lists. Users may only read and execute the program.
grep -qxF '!define PROGRAM_RIGHTS "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)"' \
  "$repo/packaging/folders.nsh" || fail "users may do more than read and execute the program"

# What is published, of a build with scripts as programs for Linux: a release, again under another umask, a signed draft.
mkdir -p build/{release/generated,release/demo/standin/15.0.2.5,host}
cp "$1"/{QRTTavrelUtility,packcheck,logcheck}.exe build/release/
cp "$1"/generated/{product.*,korsa.ini,deploy.ps1} build/release/generated/
cp "$1/demo/standin/15.0.2.5/Qrt.exe" build/release/demo/standin/15.0.2.5/
for tool in packcheck logcheck; do echo "$tool" >build/host/$tool; done
export SOURCE_DATE_EPOCH=1700000000
pack() {
  "$repo/packaging/pack.sh" build "$1" "$(printf '7%.0s' {1..40})" '- Changed.' 2>pack.log || { cat pack.log >&2; fail "no $1"; }
}
"$repo/packaging/installer.sh" build/release >/dev/null
(unset TAVREL_SIGN_CERTIFICATE && pack released && umask 077 && pack again)
cmp released/SHA256SUMS again/SHA256SUMS || fail "the umask changes what is published"
sed -i -E "s/(TAVREL_VERSION.*[0-9])/\1-DRAFT/" build/release/generated/product.*
"$repo/packaging/installer.sh" build/release >/dev/null
pack drafted

(cd released && sha256sum --quiet -c SHA256SUMS) || fail "wrong sums"
name=$(. "$1/generated/product.sh" && echo "QRTTavrelUtility-$TAVREL_VERSION")
grep -q UNSIGNED released/NOTES.md && grep -q UNSIGNED released/SHA256SUMS || fail "does not say UNSIGNED"
grep -q 'DRAFT of commit 7777' drafted/NOTES-DRAFT.md && ! grep -q UNSIGNED drafted/* || fail "wrong notes of a signed draft"
grep -qx -- '- Changed.' released/NOTES.md && ! grep -q DRAFT released/NOTES.md || fail "wrong notes of a release"
cmake -E tar xf "released/$name.zip" && cmake -E tar xf "drafted/$name-DRAFT.zip"
for file in "$name-DRAFT"/{*.exe,trial/*.exe,*.ps1} "drafted/$name-DRAFT-setup.exe"; do
  if [[ $file == *.ps1 ]] && grep -q 'deploy.ps1 is not' drafted/NOTES-DRAFT.md; then continue; fi
  osslsigncode verify -CAfile signer.pem -TSA-CAfile stamper.pem -in "$file" >verify.log 2>&1 &&
    grep -q 'Timestamp Server Signature verification: ok' verify.log || { cat verify.log >&2; fail "$file is not signed"; }
done
# Every program is in the bill of materials with its sum; every library of the bill is in the notices.
bill=released/$name.cdx.json
find "$name" "released/$name-setup.exe" -type f \( -path '*/linux/*' -o -name '*.exe' -o -name '*.ps1' \) -exec sha256sum {} + |
  cut -d ' ' -f 1 | sort >sums
jq -r '.components[].hashes[0].content? // empty' "$bill" | sort | cmp sums || fail "a program is not in the bill of materials"
while read -r library; do
  grep -q "^======== $library: " "$name/THIRD-PARTY-NOTICES.txt" || fail "no notice for $library"
done < <(jq -r '.components[] | select(.type == "library").name' "$bill")
# The first page leads to each guide, and each guide back. Two blanks of a log's text stay two.
for page in "$name"/{CHANGELOG,SECURITY,docs/*}.html; do
  grep -qF "href=\"${page#*/}\"" "$name/index.html" && grep -q 'index.html"' "$page" || fail "no link to or from $page"
done
grep -q '>App  Mode:<' "$name/docs/log.html" && grep -q 'white-space: pre-wrap' "$name/docs/log.html" ||
  fail "log.html shows two blanks as one"

# A commit that release.sh accepts. A fake setup.sh ends each run that was not refused.
mkdir tree
(cd "$repo" && cp --parents -t "$work/tree" release.sh scripts/lib.sh CMakeLists.txt)
chmod -R u+w tree  # the checkout can be read-only
cd tree
git() { command git -c user.name=test -c user.email=test@example.org "$@"; }
version() { sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt; }
printf '## [Unreleased]\n\n## [%s] - 2026-01-01\n\n- All.\n' "$(version)" >CHANGELOG.md
printf '#!/bin/bash\necho not refused\nexit 1\n' >scripts/setup.sh
chmod +x scripts/setup.sh
echo /build >.gitignore
git init -q . && git add -A && git commit -qm all && git tag clean && git tag "v$(version)"
# change of the tree | arguments | words of the answer
while IFS='|' read -r change arguments words; do
  git reset -q --hard clean && git clean -qfd
  eval "$change"
  # shellcheck disable=SC2086
  if ./release.sh $arguments >../out 2>&1 || ! grep -qF -- "$words" ../out; then fail "$change: $(<../out)"; fi
done <<'EOT'
true||not refused
echo >>CHANGELOG.md||the tree is dirty
touch foreign||the tree is dirty
true|nowhere|no such commit
true|HEAD --daft|unknown option: --daft
git commit -q --allow-empty -m next||has no tag v
git commit -q --allow-empty -m next|HEAD --draft|not refused
sed -i '2s/^$/- New./' CHANGELOG.md; git commit -qam next; git tag -f v$(version)||entries under [Unreleased]
sed -i 's/ VERSION [0-9]/&9/' CMakeLists.txt; git commit -qam next; git tag v$(version)||CHANGELOG.md has no section
EOT
exit "$failed"
