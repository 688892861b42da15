#!/bin/bash
# tst_install.sh CMAKE BUILD: what is installed works from where it is put, and what tells the
# desktop of it is right.
source tests/house/assert.sh
cmake=$1 build=$2
root="$sandbox/a system"
usr="$root/usr"
DESTDIR="$root" "$cmake" --install "$build" --prefix /usr >"$sandbox/log" 2>&1 || cat "$sandbox/log"

check 'all files are in their places' \
    "$(sort <<'END'
bin/quillmoor-cli
bin/quillmoor-composer
share/applications/quillmoor-composer.desktop
share/doc/quillmoor-composer/CLI.md
share/doc/quillmoor-composer/README.md
share/doc/quillmoor-composer/changelog.Debian.gz
share/doc/quillmoor-composer/changelog.gz
share/doc/quillmoor-composer/copyright
share/icons/hicolor/128x128/apps/quillmoor-composer.png
share/icons/hicolor/16x16/apps/quillmoor-composer.png
share/icons/hicolor/256x256/apps/quillmoor-composer.png
share/icons/hicolor/32x32/apps/quillmoor-composer.png
share/icons/hicolor/48x48/apps/quillmoor-composer.png
share/icons/hicolor/scalable/apps/quillmoor-composer.svg
share/man/man1/quillmoor-cli.1.gz
share/man/man1/quillmoor-composer.1.gz
share/metainfo/example.quillmoor_composer.composer.metainfo.xml
share/mime/packages/quillmoor-composer.xml
END
)" "$(cd "$usr" && find . -type f | sed 's|^\./||' | sort)"

version=$("$usr/bin/quillmoor-composer" --version)
check 'the installed program runs' 'quillmoor-composer' "${version% *}"
check 'both programs are of one version' "${version#* }" \
    "$("$usr/bin/quillmoor-cli" --version | sed 's/.* //')"

desktop="$usr/share/applications/quillmoor-composer.desktop"
check 'the desktop entry is valid' '' "$(desktop-file-validate "$desktop" 2>&1)"
check 'the desktop entry starts the installed program' 'quillmoor-composer -- %F' \
    "$(sed -n 's/^Exec=//p' "$desktop")"
check 'the desktop entry shows the installed icon' 'quillmoor-composer' \
    "$(sed -n 's/^Icon=//p' "$desktop")"

metainfo=$(echo "$usr"/share/metainfo/*.xml)
check 'the software catalogue can read its entry' '0' \
    "$(appstreamcli validate --no-net "$metainfo" >"$sandbox/log" 2>&1; echo $?)"
check 'the software catalogue is told the same version' "${version#* }" \
    "$(sed -n 's/.*<release version="\([^"]*\)".*/\1/p' "$metainfo")"

# The system's own types, and ours beside them.
mkdir -p "$sandbox/mime/packages"
cp /usr/share/mime/packages/freedesktop.org.xml "$usr/share/mime/packages/"* \
    "$sandbox/mime/packages"
update-mime-database "$sandbox/mime" 2>"$sandbox/log"
type_of() {
    grep ":\*\.$1\$" "$sandbox/mime/globs2" | sort -rn | head -n 1 | cut -d : -f 2
}
check 'tunes have a type' 'text/vnd.abc' "$(type_of abc)"
check 'MIDI files have a type' 'audio/midi' "$(type_of mid)"
check 'the desktop entry takes both types' 'text/vnd.abc;audio/midi;audio/x-midi;' \
    "$(sed -n 's/^MimeType=//p' "$desktop")"

check 'the manual is well-formed' '' \
    "$(mandoc -T lint -W warning packaging/man/*.1 2>&1)"

# The long options of a text, one a line.
options_of() {
    grep --only-matching --extended-regexp -- '--[a-z]+(-[a-z]+)*' | sort -u
}
manual() {
    gunzip -c "$usr/share/man/man1/$1.1.gz" | mandoc -T ascii | col -b
}
all_help() {
    local command
    for command in '' events abc render play instruments 'pak list' 'pak get' 'pak has' \
        'pak pack' demo-game; do
        # Unquoted, as one is two words and one is none.
        "$usr/bin/quillmoor-cli" $command --help
    done
}
check 'the manual has the options of the window program' \
    "$("$usr/bin/quillmoor-composer" --help | options_of)" \
    "$(manual quillmoor-composer | grep -v quillmoor-cli | options_of)"
check 'the manual has the options of the command line program' "$(all_help | options_of)" \
    "$(manual quillmoor-cli | options_of)"
finish
