#!/bin/bash
# Formats all C++ files in place.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/sources.sh

sources cpp h | tr '\n' '\0' | xargs -0r clang-format -i
