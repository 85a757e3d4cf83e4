#!/bin/bash
# Signs programs in place, with a time stamp: packaging/sign.sh FILE…
#   TAVREL_SIGN_CERTIFICATE    file with the certificate: PKCS #12 with the private key (*.p12, *.pfx), else PEM with
#                              the chain, whose key is on a token
#   TAVREL_SIGN_MODULE         for a token: its PKCS #11 library
#   TAVREL_SIGN_KEY            for a token: URI of the key, for example pkcs11:object=release;type=private
#   TAVREL_SIGN_PASSWORD_FILE  file with the password or the token's PIN; none unless set
#   TAVREL_SIGN_TIMESTAMP      address of an RFC 3161 time-stamp server: without a time stamp, Windows distrusts the
#                              signature as soon as the certificate has expired
# A script (*.ps1) needs osslsigncode 2.9, of Debian 13 or of the backports for Debian 12.
# A token needs OpenSSL's engine pkcs11 (Debian: libengine-pkcs11-openssl).
set -euo pipefail
. "$(dirname -- "$(readlink -f -- "$0")")/../scripts/lib.sh"
check_usage 1 "$@"
[[ -n ${TAVREL_SIGN_CERTIFICATE-} ]] || die "TAVREL_SIGN_CERTIFICATE names no certificate"
[[ -n ${TAVREL_SIGN_TIMESTAMP-} ]] || die "TAVREL_SIGN_TIMESTAMP names no time-stamp server"
case $TAVREL_SIGN_CERTIFICATE in
  *.p12 | *.pfx) key=(-pkcs12 "$TAVREL_SIGN_CERTIFICATE") ;;
  *)
    [[ -n ${TAVREL_SIGN_MODULE-} && -n ${TAVREL_SIGN_KEY-} ]] ||
      die "a certificate that is no PKCS #12 needs TAVREL_SIGN_MODULE and TAVREL_SIGN_KEY"
    key=(-pkcs11module "$TAVREL_SIGN_MODULE" -certs "$TAVREL_SIGN_CERTIFICATE" -key "$TAVREL_SIGN_KEY") ;;
esac
password=(-pass '')
if [[ -n ${TAVREL_SIGN_PASSWORD_FILE-} ]]; then password=(-readpass "$TAVREL_SIGN_PASSWORD_FILE"); fi
for file; do
  # osslsigncode leaves a file without a time stamp behind when the server fails.
  osslsigncode sign -h sha256 "${key[@]}" "${password[@]}" -ts "$TAVREL_SIGN_TIMESTAMP" \
    -in "$file" -out "$file.signed" >&2 || { rm -f -- "$file.signed"; exit 1; }
  mv -- "$file.signed" "$file"
done
