#!/bin/sh
# debian_files.sh PACKAGE FOLDER VERSION: gives the files of a package in FOLDER what Debian asks for:
# packed manual pages, a change log, the licence, the places it wants. All that is made depends on the
# sources and SOURCE_DATE_EPOCH alone.
set -eu
package=$1 root=$2 version=$3
here=$(cd "$(dirname "$0")" && pwd)
doc=$root/usr/share/doc/$package
mkdir -p "$doc"

find "$root" -path '*/share/man/*' -type f ! -name '*.gz' -exec gzip -9n {} +

date=$(LC_ALL=C date -u -R -d "@${SOURCE_DATE_EPOCH:-0}")
awk -v debian=1 -v version="$version" -v date="$date" -f "$here/releases.awk" "$here/../CHANGELOG.md" |
    sed "1s/^tessary /$package /" | gzip -9n >"$doc/changelog.gz"
{
    printf 'Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n'
    printf 'Upstream-Name: Tessary\nSource: https://tessary.example.org\n\n'
    printf 'Files: *\nCopyright: 2026 The Tessary developers\nLicense: Expat\n'
    sed -n '/^Permission/,$s/^$/./;/^Permission/,$s/^/ /p' "$here/../LICENSE"
} >"$doc/copyright"
if [ "$package" = tessary ]; then
    ln -sf copyright "$doc/LICENSE" # which pages link to
fi
# Debian's pkg-config for another architecture looks in that one's folder alone.
if [ -d "$root/usr/lib/pkgconfig" ]; then
    libraries=$root/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
    mkdir -p "$libraries"
    mv "$root/usr/lib/pkgconfig" "$libraries"
    sed -i 's|^prefix=.*|prefix=${pcfiledir}/../../..|' "$libraries"/pkgconfig/*.pc
fi

find "$root" -type d -exec chmod 755 {} +
find "$root" -type f ! -perm /111 -exec chmod 644 {} +
find "$root" -type f -perm /111 -exec chmod 755 {} +
find "$root" -exec touch -h -d "@${SOURCE_DATE_EPOCH:-0}" {} +
