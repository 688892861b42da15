#!/bin/bash
# Takes the pictures in docs/screenshots anew, without a display.
#
#   scripts/screenshots.sh [FOLDER]     default: docs/screenshots
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
folder=${1:-$root/docs/screenshots}
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)

"$root/scripts/setup.sh" test
cd "$root"
cmake --preset release >/dev/null
cmake --build --preset release --target screenshots
QT_QPA_PLATFORM=offscreen build/release/tests/ui/screenshots "$folder"
