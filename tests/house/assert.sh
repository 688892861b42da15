# To be sourced by the tests of scripts: a temporary folder in $sandbox, a few comparisons, and
# `finish` as the last call. Run from the root of the checkout.
set -uo pipefail
sandbox=$(mktemp -d)
trap 'rm -rf "$sandbox"' EXIT
failures=0

# check NAME EXPECTED ACTUAL
check() {
    if [ "$2" != "$3" ]; then
        printf 'FAIL: %s\n  expected: %s\n  actual:   %s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

finish() {
    [ "$failures" -eq 0 ] && echo "All as expected."
    exit $((failures > 0))
}
