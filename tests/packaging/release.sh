#!/bin/bash
# Signing, and the refusals that keep a wrong release from going out: release.sh BUILD-TREE
set -euo pipefail
# shellcheck source=scripts/lib.sh
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
    print $client "HTTP/1.0 200 OK\r\nContent-Type: application/timestamp-reply\r\nContent-Length: ",
      length $reply, "\r\n\r\n$reply";
    close $client;
  }' >port 2>stamper.log &
wait_until 10 test -s port
export TAVREL_SIGN_PASSWORD_FILE=$work/password TAVREL_SIGN_CERTIFICATE=$work/signer.p12
export TAVREL_SIGN_TIMESTAMP=http://127.0.0.1:$(<port)/
cp "$program" signed.exe
"$repo/packaging/sign.sh" signed.exe 2>sign.log || { cat sign.log stamper.log >&2; fail "cannot sign"; }
osslsigncode verify -CAfile signer.pem -TSA-CAfile stamper.pem -in signed.exe >verify.log 2>&1 &&
  grep -q 'Timestamp Server Signature verification: ok' verify.log ||
  { cat verify.log >&2; fail "signature or time stamp is not valid"; }
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

# The flags are 0x5e bytes after the start of the PE header, whose offset is at 0x3c.
cp "$program" soft.exe
at=$(($(od -An -tu4 -j60 -N4 soft.exe) + 0x5e))
printf '\x00\x00' | dd of=soft.exe bs=1 seek=$at conv=notrunc status=none
if "$repo/packaging/hardened.sh" soft.exe 2>/dev/null; then fail "a program without hardening passes"; fi
rights=$(sed -n 's/^!define LOG_RIGHTS "\(.*\)"/\1/p' "$repo/packaging/folders.nsh")
grep -qF "'$rights'" "$repo/packaging/deploy.ps1.in" || fail "deploy.ps1 sets other rights than the installer"

# A tagged commit whose changelog is in order. The set-up, which comes after the refusals, ends every run.
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
git commit -q --allow-empty -m next||has no tag v
git commit -q --allow-empty -m next|--draft|not refused
sed -i '2s/^$/- New./' CHANGELOG.md; git commit -qam next; git tag -f v$(version)||entries under [Unreleased]
sed -i 's/ VERSION [0-9]/&9/' CMakeLists.txt; git commit -qam next; git tag v$(version)||CHANGELOG.md has no section
EOT
exit "$failed"
