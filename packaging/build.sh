#!/usr/bin/env bash
# usage: build.sh BUILD OUTPUT
# Makes packages of a finished release build: three for Debian with their debug symbols,
# a suite that can be unpacked anywhere, and the list of what it consists of.
set -euo pipefail
umask 022
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(realpath "$1")
mkdir -p "$2"
output=$(realpath "$2")
made=$build/debian

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }
version=$(cached CMAKE_PROJECT_VERSION)
major=${version%%.*}
maintainer=$(cached MOX_MAINTAINER)

python3 "$here/changelog.py" "$here/../CHANGELOG.md" "$version" "$maintainer" >"$made/changelog"
gzip -9nf "$made/changelog"
for page in "$here"/../docs/man/*.[157]; do
    gzip -9n <"$page" >"$made/$(basename "$page").gz"
done

cmake -D moxtool="$build/bin/moxtool" -D CMAKE_INSTALL_PREFIX="$made/completion" \
    -P "$here/../programs/moxtool/install_completion.cmake"

# Fails when a name is gone that an earlier version had.
python3 "$here/symbols.py" --template "$here/symbols" "libmoxtools.so.$major" "libmoxtools$major" >"$made/template"
(cd "$made" && dpkg-gensymbols -q -c1 -p"libmoxtools$major" -v"$version" -I"$made/template" \
    -e"$build/bin/libmoxtools.so.$version" -P"$made" -O"$made/symbols") ||
    { echo "build.sh: exported names are gone; ./dev abi says which" >&2; exit 1; }

rm -rf "$build/packages"
(cd "$build" && cpack --config CPackConfig.cmake >"$made/cpack.log" 2>&1) ||
    { cat "$made/cpack.log" >&2; exit 1; }
rm -f "$output"/*
mv "$build"/packages/*.deb "$build"/packages/*.ddeb "$output"

# The product information file lists files as they are in the packages, where their debug
# information is gone: so it is made of these, and goes into the package of the programs last.
whole=$made/whole
root=$whole/usr/lib/moxtools
tools=("$output"/moxtools_*.deb)
rm -rf "$whole" "$made/tools"
for package in "$output/libmoxtools$major"_*.deb "${tools[0]}"; do
    dpkg-deb -x "$package" "$whole"
done
cmake -D CMAKE_INSTALL_PREFIX="$root" -D bin=bin -D version="$version" -D moxinfo=moxinfo \
    -D library="libmoxtools.so.$version" \
    -D CMAKE_INSTALL_MANIFEST_FILES="$(find "$root/bin" -type f -printf '%p;')" \
    -P "$here/../cmake/ProductFile.cmake"
dpkg-deb -R "${tools[0]}" "$made/tools"
cp "$root/ProductInfo" "$made/tools/usr/lib/moxtools"
(cd "$made/tools" && md5sum usr/lib/moxtools/ProductInfo >>DEBIAN/md5sums)
dpkg-deb --root-owner-group -b "$made/tools" "${tools[0]}" >/dev/null

suite=moxtools-$version-linux-$(uname -m)
rm -rf "${made:?}/$suite"
cmake --install "$build" --strip --prefix "$made/$suite" >/dev/null
python3 "$here/sbom.py" "$made/$suite" moxtools "$version" "$output/$suite.spdx.json"
tar -C "$made" --owner=0 --group=0 --sort=name -cJf "$output/$suite.tar.xz" "$suite"
ls -l "$output"
