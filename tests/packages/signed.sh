#!/bin/sh
# Makes signed packages with a certificate made for this run, and verifies what is in them: programs in the zip and
# in the installer, and the installer. A changed byte must be noticed. Usage: tests/packages/signed.sh
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
work=$root/build/packages-signed
packages=$work/packages

fail() {
  echo "signed: $*" >&2
  exit 1
}

verify() {
  osslsigncode verify -CAfile "$work/certificate.pem" -in "$1" >"$work/verified" 2>&1 &&
    grep -q '^Signature verification: ok' "$work/verified"
}

rm -rf "$work"
mkdir -p "$work"
openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj '/CN=Tarvex test' -addext 'extendedKeyUsage=codeSigning' \
  -keyout "$work/key.pem" -out "$work/certificate.pem" 2>"$work/openssl.log" || fail 'no certificate'
TARVEX_SIGN=$root/packaging/sign.sh TARVEX_SIGN_CERTIFICATE=$work/certificate.pem TARVEX_SIGN_KEY=$work/key.pem \
  TARVEX_PACKAGES=$packages "$root/package"
for arch in x64 x86; do
  python3 -m zipfile -e "$packages"/tarvex-*-"$arch".zip "$work/$arch"
  msiextract -C "$work/$arch-msi" "$packages"/tarvex-*-"$arch".msi >"$work/msiextract.log"
  verify "$(echo "$packages"/tarvex-*-"$arch".msi)" || fail "the installer for $arch has no valid signature"
  for name in tarvex.dll mkvhost.exe; do
    program=$(echo "$work/$arch"/*/"$name")
    verify "$program" || fail "$name for $arch has no valid signature"
    cmp "$program" "$(find "$work/$arch-msi" -name "$name")" || fail "the installer for $arch holds another $name"
  done
done
cp "$program" "$work/changed.exe"
printf '\001' | dd of="$work/changed.exe" bs=1 seek=4096 conv=notrunc status=none
! verify "$work/changed.exe" || fail 'a changed program is not noticed'
