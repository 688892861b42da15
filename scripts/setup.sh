#!/bin/bash
# Installs the Debian packages that are missing, and does nothing when all are there.
#
#   scripts/setup.sh [run|test|check|bench|package]     default: test
#
# Each purpose includes the ones before it, but for bench and package, which add to run alone.
set -euo pipefail

# To build the program and to run it.
run_packages=(cmake ninja-build g++ ccache pkg-config qtbase5-dev libsndfile1-dev libsoxr-dev
    libpcre2-dev libvorbis-dev libogg-dev libsdl2-dev)
# Without a font the tests that draw would draw boxes. midicsv is a second reader of MIDI files. Of
# the others some are a sound server that the tests start for themselves, and what records it; the
# next line is a screen with windows, and the hands and eyes on it; the last line is what reads the
# files for the desktop and the manual.
test_packages=(fonts-dejavu-core midicsv pipewire pipewire-bin pipewire-pulse wireplumber
    dbus-daemon pulseaudio-utils
    xvfb openbox xdotool x11-utils
    appstream bsdextrautils desktop-file-utils mandoc shared-mime-info)
# rsvg-convert draws the icons.
check_packages=(git clang clang-format clang-tidy libclang-rt-14-dev librsvg2-bin)
# What the benchmarks compare with; the last line is a screen for windows.
bench_packages=(libopenal-dev libsqlite3-dev abcmidi midicsv fluidsynth timgm6mb-soundfont
    qabc libxcb1-dev xvfb openbox)
# cpack asks these what the programs depend on.
package_packages=(dpkg-dev file)

packages_for() {
    case $1 in
    run) echo "${run_packages[@]}" ;;
    test) echo "$(packages_for run)" "${test_packages[@]}" ;;
    check) echo "$(packages_for test)" "${check_packages[@]}" ;;
    bench) echo "$(packages_for run)" "${bench_packages[@]}" ;;
    package) echo "$(packages_for run)" "${package_packages[@]}" ;;
    *)
        echo "usage: scripts/setup.sh [run|test|check|bench|package]" >&2
        return 2
        ;;
    esac
}

# Those of the packages named that are not installed.
missing_of() {
    local installed
    installed=$(dpkg-query --show --showformat='${Package} ${db:Status-Status}\n' "$@" \
        2>/dev/null | sed -n 's/ installed$//p') || true
    printf '%s\n' "$@" | grep --line-regexp --fixed-strings --invert-match "$installed" || true
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "Not root, and no sudo here. As root, run: apt-get install ${missing[*]}" >&2
        return 1
    fi
}

apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 "$@" </dev/null
}

main() {
    local list wanted
    list=$(packages_for "$1")
    read -r -a wanted <<<"$list"
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        echo "This is no Debian system, so nothing was installed. The build needs what Debian" >&2
        echo "calls: ${wanted[*]}" >&2
        return 0
    fi

    list=$(missing_of "${wanted[@]}")
    read -r -d '' -a missing <<<"$list" || true
    if [ ${#missing[@]} -eq 0 ]; then
        return 0
    fi
    echo "Installing: ${missing[*]}"
    # One source that cannot be reached need not stop us: the install tells.
    apt_get update || echo "Not all package lists are fresh, going on." >&2
    apt_get install --yes --no-install-recommends "${missing[@]}"
}

main "${1:-test}"
