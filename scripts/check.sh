#!/bin/bash
# Runs everything that a change must pass; goes on after a failure and names the failed steps.
#
#   scripts/check.sh [STEP...]
#
# Steps, all by default:
#   format  clang-format would change nothing
#   icons   the committed pictures are those that icons/src draws
#   tests   all tests of the release build: what the program does, public headers that compile
#           alone, the arrows between the folders, the scripts
#   tidy    clang-tidy has nothing to say
#   asan    all tests under the address and undefined-behaviour sanitizers
#   tsan    the tests of mixer, scheduler and player under the thread sanitizer
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/sources.sh

check_format() {
    sources cpp h | tr '\n' '\0' | xargs -0r clang-format --dry-run -Werror
}

check_icons() {
    local drawn picture status=0
    drawn=$(mktemp -d)
    scripts/icons.sh "$drawn" || status=1
    for picture in "$drawn"/*.png; do
        cmp "$picture" "icons/${picture##*/}" || status=1
    done
    rm -r "$drawn"
    return $status
}

check_tests() {
    scripts/test.sh
}

# Of the files that the release build compiles; its moc output must exist.
check_tidy() {
    cmake --preset release >/dev/null && cmake --build --preset release || return 1
    sources cpp | while read -r file; do
        if grep --quiet --fixed-strings "\"file\": \"$PWD/$file\"" \
            build/release/compile_commands.json; then
            printf '%s\0' "$file"
        fi
    done | xargs -0r -n 4 -P "$(nproc)" clang-tidy -p build/release --quiet \
        2> >(grep --invert-match ' warnings\? generated' >&2)
}

check_sanitizer() {
    cmake --preset "$1" && cmake --build --preset "$1" \
        && ctest --preset "$1" --parallel "$(nproc)"
}

check_asan() {
    check_sanitizer asan
}

check_tsan() {
    check_sanitizer tsan
}

steps=("$@")
if [ ${#steps[@]} -eq 0 ]; then
    steps=(format icons tests tidy asan tsan)
fi
for step in "${steps[@]}"; do
    if ! declare -F "check_$step" >/dev/null; then
        sed -n '/^#   scripts/,/^set/{/^#/s/^# \{0,1\}//p}' scripts/check.sh >&2
        exit 2
    fi
done

scripts/setup.sh check
failed=()
for step in "${steps[@]}"; do
    echo "== $step"
    "check_$step" || failed+=("$step")
done
if [ ${#failed[@]} -gt 0 ]; then
    echo "FAILED: ${failed[*]}"
    exit 1
fi
echo "All steps passed: ${steps[*]}"
