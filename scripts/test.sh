#!/bin/bash
# Installs what is missing, builds everything and runs the tests.
#
#   scripts/test.sh [CTEST ARGUMENT...]     for instance: scripts/test.sh -R ABC
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

"$root/scripts/setup.sh" test
cd "$root"
cmake --preset release
cmake --build --preset release
ctest --preset release --parallel "$(nproc)" "$@"
