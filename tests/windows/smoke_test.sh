#!/bin/bash
# Asks the real DLL, on a fresh Windows PC, for an id in each format that is made of hardware alone,
# and makes the same ids a second time from the values that the logs show.
#
#   smoke_test.sh BUILD_DIR   has deviceid.exe, host.exe and the DLL; exits 77 where no Wine can run
set -euo pipefail

wine=$(dirname "$(realpath "$0")")/../../tools/wine/wine_root.sh
"$wine" why-not || exit

# One batch file asks for all of them, since most of the time goes into starting Wine.
printf '@%s\n@echo = %%errorlevel%%\n' "deviceid.exe --log --format "1.{0,1,2,4,5,6} host.exe \
    > "$1/smoke_test.bat"
output=$("$wine" run --serial 1A2BC3D4 "$1/smoke_test.bat" 2>&1) || true

"$(dirname "$0")/../../tools/check_ids.py" --value '1a2bc3d4test product_serialtest board_serial' \
    1.0 1.1 1.2 1.4 1.5 1.6 host <<< "$output"
