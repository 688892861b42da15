#!/bin/bash
# The checks of this folder notice what they are for.
source tests/house/assert.sh
checks=$PWD/tests/house

arrows() {
    printf '%b' "$1" >"$sandbox/layers"
    printf '%b' "$2" >"$sandbox/arrows"
    (cd "$sandbox" && bash "$checks/check_arrows.sh" layers arrows)
    echo "status $?"
}

layers='model : Qt5::Core\nABC : model Qt5::Core\nMIDI : model ABC\n'
check 'declared arrows are fine' 'status 0' \
    "$(arrows "$layers" 'model : Qt5::Core\nMIDI : ABC\nABC :\n')"
check 'an arrow upwards is refused' $'model/CMakeLists.txt: must not use ABC\nstatus 1' \
    "$(arrows "$layers" 'model : Qt5::Core ABC\n')"
check 'a Qt module that is not listed is refused' \
    $'ABC/CMakeLists.txt: must not use Qt5::Widgets\nstatus 1' \
    "$(arrows "$layers" 'ABC : Qt5::Widgets\n')"
check 'an unknown folder is refused' $'The folder misc has no place among the layers.\nstatus 1' \
    "$(arrows "$layers" 'misc : model\n')"
check 'layers cannot form a circle' \
    $'layers:1: model may only use folders above it, not ABC\nstatus 1' \
    "$(arrows 'model : ABC\nABC : model\n' '')"

includes() {
    rm -rf "$sandbox/tree"
    mkdir -p "$sandbox/tree/ABC" "$sandbox/tree/model" "$sandbox/tree/tests/ABC"
    mkdir -p "$sandbox/tree/ABC/text" "$sandbox/tree/ABC/stray"
    printf 'model :\nABC/text :\nABC : model\n' >"$sandbox/layers"
    printf '%b' "$2" >"$sandbox/tree/$1"
    bash "$checks/check_includes.sh" "$sandbox/layers" "$sandbox/tree"
    echo "status $?"
}

check 'own, lower and system headers are fine' 'status 0' \
    "$(includes ABC/A.cpp '#include "ABC/A.h"\n#include "model/M.h"\n#include <QString>\n')"
check 'the moc output is fine' 'status 0' "$(includes tests/ABC/t.cpp '#include "t.moc"\n')"
check 'an upper header is refused' \
    $'model/M.cpp:2:#include "ABC/A.h": model must not use ABC\nstatus 1' \
    "$(includes model/M.cpp '\n#include "ABC/A.h"\n')"
check 'a folder within a folder goes by its path' \
    $'ABC/text/T.cpp:1:#include "model/M.h": ABC/text must not use model\nstatus 1' \
    "$(includes ABC/text/T.cpp '#include "model/M.h"\n#include "ABC/text/T.h"\n')"
check 'what a folder within it offers must be listed too' \
    $'ABC/A.cpp:1:#include "ABC/text/T.h": ABC must not use ABC/text\nstatus 1' \
    "$(includes ABC/A.cpp '#include "ABC/text/T.h"\n')"
check 'a folder within a folder needs a place' \
    $'The folder ABC/stray has no place among the layers.\nstatus 1' \
    "$(includes ABC/stray/S.cpp '')"
check 'a relative path is refused' \
    $'ABC/A.cpp:1:#include "../model/M.h": write the path from the root\nstatus 1' \
    "$(includes ABC/A.cpp '#include "../model/M.h"\n')"
check 'a relative path in a test is refused' \
    $'tests/ABC/t.cpp:1:# include "../M.h": write the path from the root\nstatus 1' \
    "$(includes tests/ABC/t.cpp '# include "../M.h"\n')"
check 'a bare name is refused' \
    $'ABC/A.cpp:1:#include "A.h": write the path from the root\nstatus 1' \
    "$(includes ABC/A.cpp '#include "A.h"\n')"
check 'a header without guard is refused' $'./ABC/A.h: lacks #pragma once\nstatus 1' \
    "$(includes ABC/A.h 'class A;\n')"
check 'a guarded header is fine' 'status 0' "$(includes ABC/A.h '#pragma once\nclass A;\n')"

links() {
    rm -rf "$sandbox/tree"
    mkdir -p "$sandbox/tree/docs"
    touch "$sandbox/tree/LICENSE"
    printf '%s\n' "$1" >"$sandbox/tree/docs/page.md"
    bash "$checks/check_links.sh" "$sandbox/tree"
    echo "status $?"
}

check 'links to files, places and headings are fine' 'status 0' \
    "$(links '[a](../LICENSE) [b](https://example.org/x) [c](#top) [d](page.md#there)')"
check 'a dead link is reported' $'./docs/page.md: gone.md is not there\nstatus 1' \
    "$(links 'See [this](gone.md).')"
finish
