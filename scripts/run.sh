#!/bin/bash
# Installs what is missing, builds the programs, makes the demo game and opens a demo song in the
# window program, with the demo game. Where there is no display, the song is rendered to a wave file
# instead.
#
#   scripts/run.sh
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build/release
data=${XDG_DATA_HOME:-${HOME:-$root/build}/.local/share}/quillmoor-composer
cli=$build/quillmoor-cli
window=$build/quillmoor-composer

build_programs() {
    local folder targets=()
    for folder in cli app; do
        if [ -f "$root/$folder/CMakeLists.txt" ]; then
            targets+=("$folder/all")
        fi
    done
    (cd "$root" && cmake --preset release >"$root/build/configure.log") || {
        cat "$root/build/configure.log"
        return 1
    }
    cmake --build "$build" --target "${targets[@]}"
}

# Brings the demo game and its songs up to date when another program made those that are there.
# The program leaves files alone that the user wrote or changed.
make_demo() {
    local stamp
    stamp=$(sha256sum <"$cli")
    if [ "$stamp" = "$(cat "$data/demo-stamp" 2>/dev/null)" ]; then
        return
    fi
    echo "Making the demo game in $data/demo-game"
    mkdir -p "$data"
    "$cli" demo-game "$data/demo-game" --songs "$data/demo-songs" >/dev/null
    echo "$stamp" >"$data/demo-stamp"
}

# The folder of the first demo song in parts; its name is the song's.
demo_song() {
    local folder parts
    for folder in "$data"/demo-songs/*/; do
        parts=("$folder"*.abc)
        if [ -e "${parts[0]}" ]; then
            echo "${folder%/}"
            return
        fi
    done
    echo "There is no demo song in $data/demo-songs." >&2
    return 1
}

# The user's own game, if there is one, plays no part: the demo songs are made for the demo game.
# The first file dialog shows the folder that the program was started in.
open_demo_song() {
    cd "$data/demo-songs"
    exec "$window" --game "$data/demo-game" -- "$1"/*.abc
}

render_demo_song() {
    local song=$1 wave report seconds
    wave=$root/build/$(basename "$song").wav
    report=$("$cli" render "$wave" "$song"/*.abc --game "$data/demo-game")
    seconds=$(sed -n 's/.*"seconds":\([0-9.]*\).*/\1/p' <<<"$report")
    echo
    echo "Rendered the demo song to $wave"
    LC_NUMERIC=C printf 'Length: %.1f seconds\n' "$seconds"
}

"$root/scripts/setup.sh" run
mkdir -p "$root/build"
build_programs
make_demo
song=$(demo_song)
if [ -x "$window" ] && [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    open_demo_song "$song"
fi
render_demo_song "$song"
