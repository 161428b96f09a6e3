#!/usr/bin/env bash
# Every C and C++ file is formatted as .clang-format says.
set -euo pipefail
find include src tools tests examples \( -name '*.h' -o -name '*.cc' -o -name '*.c' \) -print0 |
    xargs -0 clang-format --dry-run -Werror
