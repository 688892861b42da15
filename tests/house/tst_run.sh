#!/bin/bash
# scripts/run.sh makes the demo game once and opens a demo song in the window program; it renders
# the song where there is no such program or no display. The programs and the build are stand-ins.
source tests/house/assert.sh
root="$sandbox/a check out"
mkdir -p "$root/scripts" "$root/cli" "$root/build/release" "$sandbox/tools" "$sandbox/home"
touch "$root/cli/CMakeLists.txt"
cp scripts/run.sh "$root/scripts/"

program() {
    printf '#!/bin/bash\n%s\n' "$2" >"$1"
    chmod +x "$1"
}

program "$root/scripts/setup.sh" 'echo "setup $*" >>"$CALLS"'
program "$sandbox/tools/cmake" 'echo "cmake $*" >>"$CALLS"; exit ${CMAKE_STATUS:-0}'
cli=$(
    cat <<'END'
echo "cli $*" >>"$CALLS"
if [ "$1" = demo-game ]; then
    mkdir -p "$2" "$4/A midi file" "$4/Two parts"
    touch "$4/A midi file/song.mid" "$4/Two parts/1.abc" "$4/Two parts/2.abc"
else
    echo '{"file":"x","seconds":12.4666,"frames":600000}'
fi
END
)
program "$root/build/release/quillmoor-cli" "$cli"

# run [VARIABLE=VALUE...]: what was called and the exit status; the output goes to a file.
run() {
    : >"$sandbox/calls"
    env -u DISPLAY -u WAYLAND_DISPLAY -u XDG_DATA_HOME HOME="$sandbox/home" \
        PATH="$sandbox/tools:$PATH" CALLS="$sandbox/calls" "$@" \
        bash "$root/scripts/run.sh" >"$sandbox/out" 2>&1 </dev/null
    echo "status $?" >>"$sandbox/calls"
    sed "s#$sandbox/##g" "$sandbox/calls"
}

data=home/.local/share/quillmoor-composer
build='setup run
cmake --preset release
cmake --build a check out/build/release --target cli/all'
make="cli demo-game $data/demo-game --songs $data/demo-songs"
render="cli render a check out/build/Two parts.wav $data/demo-songs/Two parts/1.abc"
render+=" $data/demo-songs/Two parts/2.abc --game $data/demo-game"

check 'the first run makes the demo game' "$build
$make
$render
status 0" "$(run)"
check 'the wave file and its length are named' "Rendered the demo song to $root/build/Two parts.wav
Length: 12.5 seconds" "$(tail -n 2 "$sandbox/out")"
check 'the second run only renders' "$build
$render
status 0" "$(run)"

echo '# changed' >>"$root/build/release/quillmoor-cli"
check 'a changed program makes the demo game anew' "$build
$make
$render
status 0" "$(run)"
check 'another data folder is honoured' "setup run
cmake --preset release
cmake --build a check out/build/release --target cli/all
${make//$data/other/quillmoor-composer}
${render//$data/other/quillmoor-composer}
status 0" "$(run XDG_DATA_HOME="$sandbox/other")"
check 'a failing build ends it' 'setup run
cmake --preset release
status 1' "$(run CMAKE_STATUS=1)"

check 'a display alone changes nothing' "$build
$render
status 0" "$(run DISPLAY=:0)"
mkdir "$root/app"
touch "$root/app/CMakeLists.txt"
program "$root/build/release/quillmoor-composer" 'echo "window $*" >>"$CALLS"'
check 'the window program opens the song where there is a display' "$build app/all
window --game $data/demo-game -- $data/demo-songs/Two parts/1.abc $data/demo-songs/Two parts/2.abc
status 0" "$(run WAYLAND_DISPLAY=wayland-0)"
check 'without a display the song is rendered' "$build app/all
$render
status 0" "$(run)"

program "$root/build/release/quillmoor-composer" 'pwd >>"$CALLS"'
check 'its file dialogs start with the demo songs' "$build app/all
$data/demo-songs
status 0" "$(run DISPLAY=:0)"
finish
