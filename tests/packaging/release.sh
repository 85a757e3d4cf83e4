#!/bin/bash
# What keeps a release from going out wrong: release.sh BUILD-TREE. Signs with a throw-away certificate, and looks
# whether each of the refusals comes, with its words, before anything is built.
set -euo pipefail
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../../scripts/lib.sh"
program=$1/QRTTavrelUtility.exe stage=$(mktemp -d) failed=0
trap 'rm -rf "$stage"' EXIT
cd "$stage"
fail() { echo "release: $*" >&2; failed=1; }

openssl req -x509 -newkey rsa:2048 -nodes -keyout key.pem -out certificate.pem -days 2 -subj '/CN=Throw-away' \
  -addext extendedKeyUsage=codeSigning 2>openssl.log
echo secret >password
openssl pkcs12 -export -inkey key.pem -in certificate.pem -passout file:password -out certificate.p12
cp "$program" signed.exe
TAVREL_SIGN_PKCS12=$stage/certificate.p12 TAVREL_SIGN_PASSWORD_FILE=$stage/password \
  "$repo/packaging/sign.sh" signed.exe 2>sign.log || { cat sign.log >&2; fail "cannot sign"; }
osslsigncode verify -CAfile certificate.pem -in signed.exe >verify.log 2>&1 ||
  { cat verify.log >&2; fail "the signature does not hold"; }
if TAVREL_SIGN_PKCS12=$stage/password "$repo/packaging/sign.sh" "$stage/signed.exe" 2>/dev/null; then
  fail "signing with what is no certificate passes"
fi

# The flags stand 0x5e bytes behind the PE header, whose place is told at 0x3c.
cp "$program" soft.exe
at=$(($(od -An -tu4 -j60 -N4 soft.exe) + 0x5e))
printf '\x00\x00' | dd of=soft.exe bs=1 seek=$at conv=notrunc status=none
if "$repo/packaging/hardened.sh" soft.exe 2>/dev/null; then fail "a program without hardening passes"; fi

mkdir tree
(cd "$repo" && cp --parents -t "$stage/tree" release.sh scripts/lib.sh CMakeLists.txt CHANGELOG.md)
cd tree
git() { command git -c user.name=test -c user.email=test@example.org "$@"; }
git init -q . && git add -A && git commit -qm all && git tag clean
# what is done to a clean tree | what is to be released | words of the refusal
while IFS='|' read -r change commit words; do
  git reset -q --hard clean && git clean -qfd
  eval "$change"
  if ./release.sh "$commit" >../out 2>&1 || ! grep -qF -- "$words" ../out; then fail "$change: $(<../out)"; fi
done <<'EOF'
echo >>CHANGELOG.md|HEAD|the tree is dirty
touch foreign|HEAD|the tree is dirty
sed -i 's/ VERSION [0-9]/&9/' CMakeLists.txt; git commit -qam next|HEAD|CHANGELOG.md has no section
git tag v1.0.0|HEAD|the tag v1.0.0 stands at
git tag -d v1.0.0 >/dev/null|nowhere|no such commit
EOF
exit "$failed"
