#!/bin/bash
# Draws a song as a piano roll, one colour for each part: an SVG on standard output. The picture in
# the README is made by it.
#
#   scripts/picture.sh PART.abc... > docs/demo-song.svg
set -euo pipefail
cli=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build/release/quillmoor-cli

# One line "part start duration pitch" for each note of the JSON lines, times in ticks.
notes() {
    awk '{
        count = split($0, event, /\{"type":"/)
        for (i = 2; i <= count; ++i)
            if (event[i] ~ /^Note"/) {
                gsub(/[^0-9,]/, "", event[i])
                split(event[i], field, ",")
                print NR, field[2], field[4], field[3]
            }
    }'
}

draw() {
    awk '
        BEGIN {
            split("#e4572e #2e86ab #f3a712 #58a55c #8e5ba6 #d65f8c #4fb0a5 #a1683a", colour, " ")
            width = 960; height = 320; margin = 12
            low = 128
        }
        {
            part[NR] = $1; start[NR] = $2; end[NR] = $2 + $3; pitch[NR] = $4
            if (end[NR] > last) last = end[NR]
            if ($4 < low) low = $4
            if ($4 > high) high = $4
        }
        END {
            if (NR == 0) exit 1
            x = (width - 2 * margin) / last
            row = (height - 2 * margin) / (high - low + 1)
            printf "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" " \
                   "viewBox=\"0 0 %d %d\">\n", width, height, width, height
            printf "<rect width=\"%d\" height=\"%d\" rx=\"8\" fill=\"#1d232b\"/>\n", width, height
            for (p = low; p <= high; ++p)
                if (p % 12 == 0)
                    printf "<path d=\"M%d %.1fh%d\" stroke=\"#3a4452\"/>\n", margin,
                           height - margin - (p - low) * row, width - 2 * margin
            for (i = 1; i <= NR; ++i)
                printf "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" rx=\"1.5\" " \
                       "fill=\"%s\" fill-opacity=\"0.85\"/>\n", margin + start[i] * x,
                       height - margin - (pitch[i] - low + 1) * row,
                       (end[i] - start[i]) * x * 0.94, row * 0.9, colour[(part[i] - 1) % 8 + 1]
            print "</svg>"
        }'
}

"$cli" events "$@" | notes | draw
