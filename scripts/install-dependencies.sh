#!/bin/sh
# Installs every Debian package the build, the tests, the benchmarks and the
# Debian package (scripts/package.sh) need.
# Idempotent: when everything is present it does nothing and touches no network.
set -eu

packages="
    build-essential
    g++
    cmake
    ninja-build
    pkg-config
    libicu-dev
    nlohmann-json3-dev
    libglib2.0-dev
    libgtk-3-dev
    libpulse-dev
    pulseaudio
    pulseaudio-utils
    workrave
    safeeyes
    libdbusmenu-glib-dev
    xvfb
    xauth
    openbox
    python3-dbusmock
    xdotool
    x11-utils
    sway
    waybar
    wtype
    grim
    xfce4-panel
    dunst
    fonts-dejavu-core
    fonts-lohit-deva
    dbus-daemon
    libgtest-dev
    libgmock-dev
    libbenchmark-dev
    clang
    libclang-rt-14-dev
    clang-format
    clang-tidy
    binutils
    librsvg2-bin
    desktop-file-utils
    appstream
    lintian
    file
    x11-utils
    dpkg-dev
"

missing=""
for package in $packages; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $package"
    fi
done

if [ -z "$missing" ]; then
    exit 0
fi

if [ "$(id -u)" -ne 0 ]; then
    echo "install-dependencies: missing packages:$missing; run this script as root" >&2
    exit 1
fi

echo "install-dependencies: installing$missing"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
# shellcheck disable=SC2086 # the list is deliberately split into words
apt-get install -y -qq --no-install-recommends $missing
