#!/bin/bash
# Builds the Debian package build/package/quillmoor-composer_VERSION_ARCHITECTURE.deb.
#
#   scripts/package.sh
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

"$root/scripts/setup.sh" package
cd "$root"
cmake --preset release -B build/package -DBUILD_TESTING=OFF
cmake --build build/package
cd build/package
cpack
