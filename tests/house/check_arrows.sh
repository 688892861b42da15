#!/bin/bash
# check_arrows.sh LAYERS ARROWS: every arrow that is in use is allowed, and no allowed one makes a
# circle.
set -euo pipefail

awk '
    /^#/ || NF == 0 { next }
    FNR == NR {
        allowed[$1] = 1
        for (i = 3; i <= NF; ++i) {
            allowed[$1, $i] = 1
            if ($i !~ /^Qt5::/ && !($i in allowed)) {
                print FILENAME ":" FNR ": " $1 " may only use folders above it, not " $i
                bad = 1
            }
        }
        next
    }
    !($1 in allowed) {
        print "The folder " $1 " has no place among the layers."
        bad = 1
        next
    }
    {
        for (i = 3; i <= NF; ++i)
            if (!(($1, $i) in allowed)) {
                print $1 "/CMakeLists.txt: must not use " $i
                bad = 1
            }
    }
    END { exit bad }
' "$1" "$2"
