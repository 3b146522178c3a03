#!/usr/bin/env bash
# usage: test.sh OUTPUT
# Installs the packages of OUTPUT into an empty system, uses them there as people and
# authors of tools do, and removes them again. Needs root for the change of root.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
output=$(realpath "$1")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
root=$scratch/root
arch=$(gcc -print-multiarch)
unset LD_LIBRARY_PATH PKG_CONFIG_PATH

die() { printf 'test.sh: %s\n' "$*" >&2; exit 1; }
expect() { # WHAT EXPECTED FOUND
    [ "$2" = "$3" ] || die "$1: expected '$2', got '$3'"
}

lintian --fail-on error,warning "$output"/*.deb || die "lintian has found something"

[ "$(id -u)" -eq 0 ] || die "needs root to install into a system of its own"
mkdir -p "$root/var/lib/dpkg"/{info,updates} "$root/etc"
: >"$root/var/lib/dpkg/status"
packages() { dpkg --root="$root" --log=/dev/null --force-depends "$@" >"$scratch/dpkg.log" 2>&1 ||
    { cat "$scratch/dpkg.log"; die "dpkg $*"; }; }
packages -i "$output"/*.deb
version=$(dpkg --root="$root" -s moxtools | sed -n 's/^Version: //p')
library=libmoxtools${version%%.*}
expect conffile /etc/moxtools/ToolInfo \
    "$(dpkg-query --root="$root" -W -f '${Conffiles}' "$library" | awk '{print $1}')"

# What the packages depend on.
for file in $({ ldd "$root/usr/lib/moxtools/bin/moxcopy"; echo /bin/true; } | grep -o '/[^ ]*' |
    grep -v "^$root"); do
    mkdir -p "$root$(dirname "$file")"
    cp -L "$file" "$root$file"
done

echo "greeting=Hello" >>"$root/etc/moxtools/ToolInfo"
expect "a tool of the package, by its link" Hello "$(chroot "$root" /usr/bin/moxinfo greeting)"
expect "pages" "$(find "$here/../docs/man" -name '*.[157]' | wc -l)" \
    "$(find "$root/usr/share/man" -name '*.[157].gz' | wc -l)"

expect "completion" "$(chroot "$root" /usr/bin/moxtool completion bash moxinfo)" \
    "$(cat "$root/usr/share/bash-completion/completions/moxinfo")"
for script in bash-completion/completions/moxtool fish/vendor_completions.d/moxtool.fish \
    zsh/vendor-completions/_moxtools; do
    [ -s "$root/usr/share/$script" ] || die "$script is missing"
done

# What is installed is what was packaged, and damage to it is named.
product() { # PREFIX OF A COMMAND... BIN
    local bin=${*: -1} run=("${@:1:$#-1}") programs="moxcopy moxinfo moxmsg moxreport moxtool"
    local shown program
    shown=$("${run[@]}" "$bin/moxinfo" -product . -verbose) || die "the product is not sound: $shown"
    for program in $programs "libmoxtools.so.$version"; do
        grep -q "^part bin/$program $version good\$" <<<"$shown" || die "$program is no part: $shown"
    done
    grep -q "^Mox $version " <<<"$shown" || die "another product: $shown"
}
damaged() { # FILE WHAT COMMAND...
    local shown status=0
    cp -p "$1" "$scratch/sound"
    printf x | dd of="$1" bs=1 seek=2000 conv=notrunc status=none
    shown=$("${@:3}" -product .) || status=$?
    expect "status of a damaged product" 1 "$status"
    expect "what is damaged" "part $2 $version wrong checksum" "$(grep '^part' <<<"$shown")"
    cp -p "$scratch/sound" "$1"
    "${@:3}" -product . >"$scratch/log" || die "still damaged: $(cat "$scratch/log")"
}
product chroot "$root" /usr/bin
damaged "$root/usr/lib/moxtools/bin/moxmsg" bin/moxmsg chroot "$root" /usr/bin/moxinfo

# A tool of somebody else's, built by CMake and by pkg-config.
cp "$here/../tests/install/where.cpp" "$scratch"
cat >"$scratch/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(where LANGUAGES CXX)
find_package(moxtools CONFIG REQUIRED COMPONENTS testkit)
add_executable(where where.cpp)
target_link_libraries(where PRIVATE moxtools::moxtools)
set_target_properties(where PROPERTIES SKIP_BUILD_RPATH ON)
add_executable(tested where.cpp)
target_link_libraries(tested PRIVATE moxtools::testkit)
CMAKE
{ cmake -S "$scratch" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$root/usr" &&
    cmake --build "$scratch/build"; } >"$scratch/log" 2>&1 || { cat "$scratch/log"; die "by CMake"; }
export PKG_CONFIG_LIBDIR=$root/usr/lib/$arch/pkgconfig
# shellcheck disable=SC2046
g++ "$scratch/where.cpp" -o "$scratch/by_pkg_config" $(pkg-config --cflags --libs moxtools)

nm "$scratch/build/tested" | grep " T malloc$" >/dev/null || die "the test kit's objects are not in the program"

# They find the library through the link in the system's directory, and the root behind it.
for tool in "$scratch/build/where" "$scratch/by_pkg_config"; do
    cp "$tool" "$root/usr/bin/where"
    expect "root through the link" '\usr\lib\moxtools' "$(chroot "$root" /usr/bin/where)"
    rm "$root/usr/bin/where"
done

packages --remove moxtools libmoxtools-dev "$library"
[ -f "$root/etc/moxtools/ToolInfo" ] || die "the configuration went with the package"
packages --purge "$library"
left=$(find "$root" -path "$root/var" -prune -o -iname '*mox*' -print)
expect "what is left" "" "$left"

# The suite works from wherever it is unpacked, and is what its list says.
mkdir "$scratch/anywhere"
tar -C "$scratch/anywhere" -xJf "$output"/*.tar.xz
suite=$(echo "$scratch"/anywhere/*)
echo "greeting=Hello" >"$suite/ToolInfo"
expect "a tool of the suite" Hello "$(env -u ToolInfo "$suite/bin/moxinfo" greeting)"
rm "$suite/ToolInfo"
product env -u ToolInfo "$suite/bin"
damaged "$suite/bin/moxcopy" bin/moxcopy env -u ToolInfo "$suite/bin/moxinfo"
python3 "$here/check_sbom.py" "$output"/*.spdx.json "$suite"
echo "The packages install, work and go; the suite works from anywhere"
