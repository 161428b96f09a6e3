#!/bin/bash
# Makes the Windows environment ready that the tests of the DLLs run in, or tells in one line why they
# are skipped and exits 77; or 1, if $DEVICEID_REQUIRE_WINDOWS is 1.
set -euo pipefail

wine=$(dirname "$(realpath "$0")")/../../tools/wine/wine_root.sh
reason=$({ "$wine" why-not && "$wine" setup; } 2>&1 | tail -n 1) || {
    echo "The tests of the DLLs cannot run: ${reason#*: }" >&2
    exit $((${DEVICEID_REQUIRE_WINDOWS:-0} == 1 ? 1 : 77))
}
