#!/bin/sh
# Builds the Debian package build/package/velmora_<version>_<arch>.deb and
# checks it with lintian. Installs missing Debian packages first.
#
# A release build, installed under /usr with Debian's own build flags
# (dpkg-buildflags, with every hardening option) and without the tests and
# the benchmarks, is what `cmake --install` puts in place, stripped as
# dh_strip strips. The package is made from it with dpkg's own tools: the
# dependencies computed from the binaries by dpkg-shlibdeps, plus a font
# for Hindi's Devanagari, which Debian's default fonts lack (fonts-noto-core
# covers all seven languages; fonts-lohit-deva is the small alternative);
# the library's shlibs entry; and the ldconfig trigger. It has no maintainer
# scripts: dpkg's triggers run ldconfig and update the icon cache and the
# menus. The control file's text is packaging/control.in.
#
# lintian then reports on it: an error fails this script. The warnings it
# gives, and why each stays, are in the README's "Install" section.
#
# Install the package with
#   apt-get install ./build/package/velmora_<version>_<arch>.deb
set -eu
cd "$(dirname "$0")/.."
./scripts/install-dependencies.sh

build=build/package
root=$PWD/$build/root
export DEB_BUILD_MAINT_OPTIONS="hardening=+all"
CFLAGS="$(dpkg-buildflags --get CFLAGS)"
CXXFLAGS="$(dpkg-buildflags --get CXXFLAGS)"
CPPFLAGS="$(dpkg-buildflags --get CPPFLAGS)"
LDFLAGS="$(dpkg-buildflags --get LDFLAGS)"
# CMake takes the preprocessor's flags with the compilers'.
export CFLAGS="$CFLAGS $CPPFLAGS" CXXFLAGS="$CXXFLAGS $CPPFLAGS" LDFLAGS

# A fresh configuration: the flags above are read only when the build
# folder is made.
rm -rf "$build"
cmake -S . -B "$build" -G Ninja \
    -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX=/usr \
    -DVELMORA_BUILD_TESTS=OFF \
    -DVELMORA_BUILD_BENCHMARKS=OFF
cmake --build "$build" --parallel "$(nproc)"
DESTDIR=$root cmake --install "$build"

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
architecture=$(dpkg --print-architecture)
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
library=usr/lib/$multiarch/libVelmoraNative.so.$version
major=${version%%.*}
package="$build/velmora_${version}_$architecture.deb"

# The changelog's newest entry names the version being packaged.
changelog=$(dpkg-parsechangelog --file packaging/changelog --show-field Version)
if [ "$changelog" != "$version" ]; then
    echo "package: packaging/changelog is at $changelog, the project at $version" >&2
    exit 1
fi

# Stripped as dh_strip strips: the debugging symbols and the notes go.
strip --remove-section=.comment --remove-section=.note --strip-unneeded "$root/$library"
strip --remove-section=.comment --remove-section=.note "$root/usr/bin/velmora"

# The libraries the binaries need, as Debian packages; dpkg-shlibdeps reads
# a control file, which only names the package here.
mkdir -p "$build/shlibdeps/debian"
printf 'Source: velmora\n\nPackage: velmora\nArchitecture: any\n' >"$build/shlibdeps/debian/control"
depends=$(cd "$build/shlibdeps" && dpkg-shlibdeps -O "-e$root/usr/bin/velmora" "-e$root/$library" | sed -n 's/^shlibs:Depends=//p')
if [ -z "$depends" ]; then
    echo "package: dpkg-shlibdeps found no dependencies" >&2
    exit 1
fi

mkdir -p "$root/DEBIAN"
installed_size=$(du -sk --exclude=DEBIAN "$root" | cut -f1)
sed -e "s|@VERSION@|$version|" \
    -e "s|@ARCHITECTURE@|$architecture|" \
    -e "s|@INSTALLED_SIZE@|$installed_size|" \
    -e "s|@SHLIBS_DEPENDS@|$depends|" \
    packaging/control.in >"$root/DEBIAN/control"
echo "libVelmoraNative $major velmora (>= $version)" >"$root/DEBIAN/shlibs"
echo "activate-noawait ldconfig" >"$root/DEBIAN/triggers"
(cd "$root" && find usr -type f -print0 | sort -z | xargs -0 md5sum) >"$root/DEBIAN/md5sums"
chmod 0644 "$root/DEBIAN/control" "$root/DEBIAN/shlibs" "$root/DEBIAN/triggers" "$root/DEBIAN/md5sums"

rm -f "$package"
dpkg-deb --root-owner-group -Zxz --build "$root" "$package"
dpkg-deb --info "$package"
dpkg-deb --contents "$package"
# Errors fail the script (lintian's exit status); warnings are listed.
lintian --info --fail-on error "$package"
echo "package: $package"
