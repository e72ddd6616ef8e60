#!/bin/sh
# Checks a tree that `cmake --install` made:
#
#   check-installed.sh PREFIX LIBDIR VERSION CONSUMER_SOURCE CONSUMER_BUILD [SANITIZERS]
#
# SANITIZERS, as the build's -fsanitize=, builds the consumer the same way:
# a sanitized library loads only into a program that has the runtime.
# every file in its place, the desktop files valid, the icon in every size
# it claims, no run-time search path in the binaries, the program starting
# with the library installed beside it, and a program of someone else's
# built against the library with find_package(Velmora) and with pkg-config,
# linked and loaded at run time, also through a link in another folder and a
# relative LD_LIBRARY_PATH.
set -eu
prefix=$1
libdir=$2
version=$3
consumer_source=$4
consumer_build=$5
sanitizers=${6:-}
consumer_flags=""
if [ -n "$sanitizers" ]; then
    consumer_flags="-fsanitize=$sanitizers"
fi
major=${version%%.*}
failures=0

fail() {
    echo "check-installed: $*" >&2
    failures=$((failures + 1))
}

expect_file() {
    [ -f "$prefix/$1" ] || fail "missing $1"
}

expect_link() {
    [ -L "$prefix/$1" ] || fail "$1 is not a link"
}

expect_file "bin/velmora"
[ -x "$prefix/bin/velmora" ] || fail "bin/velmora is not executable"
expect_file "$libdir/libVelmoraNative.so.$version"
expect_link "$libdir/libVelmoraNative.so.$major"
expect_link "$libdir/libVelmoraNative.so"
expect_file "$libdir/velmora/content.json"
[ ! -e "$prefix/$libdir/content.json" ] || fail "content.json lies loose in $libdir"
expect_file "include/velmora/velmora.h"
expect_file "$libdir/pkgconfig/velmora.pc"
expect_file "$libdir/cmake/Velmora/VelmoraConfig.cmake"
expect_file "$libdir/cmake/Velmora/VelmoraConfigVersion.cmake"
expect_file "$libdir/cmake/Velmora/VelmoraTargets.cmake"
expect_file "share/applications/app.velmora.mac.desktop"
expect_file "share/metainfo/app.velmora.mac.metainfo.xml"
expect_file "share/icons/hicolor/scalable/apps/app.velmora.mac.svg"
expect_file "share/man/man1/velmora.1.gz"
expect_file "share/doc/velmora/copyright"
expect_file "share/doc/velmora/changelog.gz"
grep -q "Copyright (c) 2026 The Velmora authors" "$prefix/share/doc/velmora/copyright" || fail "the copyright file lacks the copyright line"

desktop-file-validate "$prefix/share/applications/app.velmora.mac.desktop" || fail "the desktop entry is not valid"
appstreamcli validate --no-net "$prefix/share/metainfo/app.velmora.mac.metainfo.xml" >/dev/null || fail "the metainfo is not valid"
grep -q "<release version=\"$version\"" "$prefix/share/metainfo/app.velmora.mac.metainfo.xml" || fail "the metainfo has no release $version"

# The icon the entry names, in each size the theme's folders say.
icon=$(sed -n 's/^Icon=//p' "$prefix/share/applications/app.velmora.mac.desktop")
[ "$icon" = "app.velmora.mac" ] || fail "the entry's icon is $icon"
for size in 16 22 24 32 48 64 128 256 512; do
    png="$prefix/share/icons/hicolor/${size}x${size}/apps/$icon.png"
    if [ ! -f "$png" ]; then
        fail "no ${size}x${size} icon"
        continue
    fi
    file -b "$png" | grep -q "^PNG image data, $size x $size," || fail "$png is $(file -b "$png")"
done

# The package's binaries find what they need without a search path of
# their own, and the program names no file of the build tree.
for binary in "bin/velmora" "$libdir/libVelmoraNative.so.$version"; do
    if readelf --dynamic "$prefix/$binary" | grep -Eq "\((RPATH|RUNPATH)\)"; then
        fail "$binary has a run-time search path"
    fi
done
readelf --dynamic "$prefix/$libdir/libVelmoraNative.so.$version" | grep -q "Flags: .*NODELETE" || fail "the library may be unloaded"
if grep -q "VelmoraMac/Exports/libVelmoraNative" "$prefix/bin/velmora"; then
    fail "bin/velmora names the build tree's library"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/data"

# The program starts with the library beside it, from any folder, without a
# display (its benchmark draws offscreen).
(cd "$work" && env -u LD_LIBRARY_PATH XDG_DATA_HOME="$work/data" "$prefix/bin/velmora" --benchmark --frames 1000 >"$work/benchmark.txt" 2>&1) \
    || { cat "$work/benchmark.txt" >&2; fail "bin/velmora --benchmark failed"; }

# A program of someone else's: the CMake package, linked and loaded.
rm -rf "$consumer_build"
cmake -S "$consumer_source" -B "$consumer_build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_FLAGS="$consumer_flags" -DCMAKE_EXE_LINKER_FLAGS="$consumer_flags" >"$work/configure.txt" 2>&1 \
    || { cat "$work/configure.txt" >&2; fail "find_package(Velmora) failed"; }
cmake --build "$consumer_build" >"$work/build.txt" 2>&1 || { cat "$work/build.txt" >&2; fail "the consumer did not build"; }

expected="version $version $(echo "$version" | awk -F. '{ print $1 * 10000 + $2 * 100 + $3 }')
before 780 0
after 780 0"
run_consumer() {
    name=$1
    shift
    # Headless: the library keeps its state in a folder of the test's.
    output=$(env -u DISPLAY -u WAYLAND_DISPLAY XDG_DATA_HOME="$work/data" "$@" 2>"$work/errors.txt") \
        || { cat "$work/errors.txt" >&2; fail "$name failed"; return; }
    [ "$output" = "$expected" ] || fail "$name printed: $output"
}
run_consumer "linked (CMake package)" "$consumer_build/linked"
run_consumer "loaded (CMake package, LD_LIBRARY_PATH)" env LD_LIBRARY_PATH="$prefix/$libdir" "$consumer_build/loaded"
# Through a link to the installed library in another folder, by a relative
# LD_LIBRARY_PATH.
mkdir -p "$work/elsewhere/lib"
ln -s "$prefix/$libdir/libVelmoraNative.so.$major" "$work/elsewhere/lib/libVelmoraNative.so.$major"
run_consumer "loaded through a link on a relative LD_LIBRARY_PATH" env -C "$work/elsewhere" LD_LIBRARY_PATH=lib "$consumer_build/loaded"

# pkg-config: the same program, linked from its flags.
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
[ "$(pkg-config --modversion velmora)" = "$version" ] || fail "pkg-config says version $(pkg-config --modversion velmora)"
[ "$(pkg-config --variable=soname velmora)" = "libVelmoraNative.so.$major" ] || fail "pkg-config names another soname"
# shellcheck disable=SC2046,SC2086 # the flags are words, and no flags vanish
cc -std=c11 -Wall -Werror $consumer_flags -o "$work/pkg-linked" "$consumer_source/consumer.c" $(pkg-config --cflags --libs velmora) \
    || fail "the consumer did not build with pkg-config"
[ -x "$work/pkg-linked" ] && run_consumer "linked (pkg-config)" env LD_LIBRARY_PATH="$prefix/$libdir" "$work/pkg-linked"

if [ "$failures" -ne 0 ]; then
    echo "check-installed: $failures failures" >&2
    exit 1
fi
echo "check-installed: the installed tree in $prefix is complete"
