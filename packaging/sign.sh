#!/bin/sh
# Signs one Windows program or installer in place, with osslsigncode. For TARVEX_SIGN, see docs/releasing.md.
# Usage: packaging/sign.sh FILE
#   TARVEX_SIGN_CERTIFICATE  certificates, the signer's first (PEM)
#   TARVEX_SIGN_KEY          its key (PEM)
#   TARVEX_SIGN_TIMESTAMP    address of a time stamp service; without one a signature ends with its certificate
set -eu

file=${1:?usage: packaging/sign.sh FILE}
signed=$file.signed
set -- sign -certs "${TARVEX_SIGN_CERTIFICATE:?}" -key "${TARVEX_SIGN_KEY:?}" -h sha256 \
  -n 'Tarvex Matroska Splitter'
if [ -n "${TARVEX_SIGN_TIMESTAMP:-}" ]; then
  set -- "$@" -ts "$TARVEX_SIGN_TIMESTAMP"
fi
rm -f "$signed"
osslsigncode "$@" -in "$file" -out "$signed"
mv "$signed" "$file"
