#!/bin/bash
# Signs programs in their place: packaging/sign.sh FILE…
#   TAVREL_SIGN_PKCS12         certificate and private key
#   TAVREL_SIGN_PASSWORD_FILE  file with its password; none unless set
#   TAVREL_SIGN_TIMESTAMP      address of an RFC 3161 time-stamp server; no time stamp unless set
set -euo pipefail
: "${TAVREL_SIGN_PKCS12:?names no certificate}"
password=(-pass '')
if [[ -n ${TAVREL_SIGN_PASSWORD_FILE-} ]]; then password=(-readpass "$TAVREL_SIGN_PASSWORD_FILE"); fi
for file; do
  # Gone again when signing fails, so that nothing unsigned passes for signed.
  osslsigncode sign -h sha256 -pkcs12 "$TAVREL_SIGN_PKCS12" "${password[@]}" \
    ${TAVREL_SIGN_TIMESTAMP:+-ts "$TAVREL_SIGN_TIMESTAMP"} -in "$file" -out "$file.signed" >&2 ||
    { rm -f -- "$file.signed"; exit 1; }
  mv -- "$file.signed" "$file"
done
