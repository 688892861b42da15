#!/bin/bash
# Draws the pictures of the program from icons/src: NAME.svg becomes NAME.png, at the size that it
# gives itself, and NAME@2x.png for dense screens. The window system shows the program's own icon
# in many sizes, so that is drawn in all of them. The same drawings give the same bytes.
#
#   scripts/icons.sh [FOLDER]     default: icons
set -euo pipefail
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/icons/src
target=${1:-$source/..}

# draw NAME SUFFIX OPTION...
draw() {
    rsvg-convert "${@:3}" --format png --output "$target/$1$2.png" "$source/$1.svg"
}

for file in "$source"/*.svg; do
    name=$(basename "$file" .svg)
    draw "$name" '' --zoom 1
    draw "$name" @2x --zoom 2
done
for size in 16 32 48 128 256; do
    draw appicon "-$size" --width "$size" --height "$size"
done
