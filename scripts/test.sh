#!/bin/sh
# Checks the sources' format, then builds and runs every test: a normal
# build, a clang++ build of the library, the pond and the core's tests, an
# AddressSanitizer + UndefinedBehaviorSanitizer build, and the concurrency
# tests under ThreadSanitizer. Installs missing Debian packages first.
set -eu
cd "$(dirname "$0")/.."
./scripts/install-dependencies.sh
./scripts/check-format.sh

jobs=$(nproc)

build_and_test() {
    name=$1
    shift
    ctest_filter=$1
    shift
    cmake -S . -B "build/$name" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
    cmake --build "build/$name" --parallel "$jobs"
    # The desktop platform's tests need a display, a session bus and a window
    # manager; the others do not mind them. Screenshots of what the desktop
    # tests drew land beside the build, for a person to look at.
    mkdir -p "build/$name/screenshots"
    # shellcheck disable=SC2086 # an empty filter must vanish
    VELMORA_SCREENSHOT_DIR="$PWD/build/$name/screenshots" \
        ./scripts/with-desktop.sh ctest --test-dir "build/$name" --output-on-failure --parallel "$jobs" --label-exclude real-desktop $ctest_filter
}

# The same library on desktops of real components: a headless sway with
# waybar's tray (GTK's Wayland backend, the compositor's tiling and full
# screen), and X11 with xfce4-panel's tray and dunst.
real_desktop_tests() {
    name=$1
    VELMORA_SCREENSHOT_DIR="$PWD/build/$name/screenshots" \
        ./scripts/with-wayland.sh ctest --test-dir "build/$name" --output-on-failure --label-regex real-desktop
    VELMORA_SCREENSHOT_DIR="$PWD/build/$name/screenshots" VELMORA_DESKTOP=xfce \
        ./scripts/with-desktop.sh ctest --test-dir "build/$name" --output-on-failure --label-regex real-desktop
}

build_and_test normal ""

# clang++ warns of what g++ lets pass (a local named as a static member):
# the library, the pond and the core's tests build with it too, and run.
cmake -S . -B build/clang -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DVELMORA_BUILD_BENCHMARKS=OFF
cmake --build build/clang --parallel "$jobs" --target VelmoraNative pond VelmoraCoreTests
build/clang/tests/VelmoraCore/VelmoraCoreTests --gtest_brief=1

real_desktop_tests normal
ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1 \
LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0" \
UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    build_and_test asan "" -DVELMORA_SANITIZE=address,undefined -DVELMORA_BUILD_BENCHMARKS=OFF
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
    build_and_test tsan "--label-regex concurrency" -DVELMORA_SANITIZE=thread -DVELMORA_BUILD_BENCHMARKS=OFF
