#!/usr/bin/env bash
# Runs BIN_DIR/deviceid as a user would: tool_test.sh BIN_DIR
# It gets no id in a format above 1.5: those leave files on the machine.
set -u
export LC_ALL=C
tool=$1/deviceid
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
export XDG_DATA_HOME=$work/share
failures=0

# expect STATUS STDOUT STDERR ARGUMENT...: the texts are patterns for all that is printed.
expect() {
    "$tool" "${@:4}" >"$work/out" 2>"$work/err"
    local got=$? out err
    out=$(<"$work/out") err=$(<"$work/err")
    [[ $got == "$1" && $out =~ ^($2)$ && $err =~ ^($3)$ ]] && return
    failures=$((failures + 1))
    printf 'FAILED: deviceid %s\nstatus: %s\nstdout: %s\nstderr: %s\n' "${*:4}" "$got" "$out" "$err"
}

line=$'deviceid: [^\n]+'
expect 0 '[^[:space:]]{36}' '' --format 1.0
expect 0 '[^[:space:]]{40}' '\[..:..:..:...\] \[Debug\] Execute .*' --format 1.5 --log
expect 6 '' 'deviceid: UnsupportedVersion \(6\): .*"9\.9"; there are 1\.0, .*' --format 9.9
expect 6 '' "$line" --format $'9\n9'
expect 7 '' 'deviceid: NoVersion \(7\): .*' --format ''
expect 8 '' '.* RecheckHardwareId is not supported .*"1\.5"' --format 1.5 --recheck --log
expect 8 '' "$line" --format 1.5 --flags SkipDateCheck,UseEmulatedHardwareIds
for wrong in --no more '--format 1' '--recheck --flags SkipDateCheck' '--flags SkipDateCheck,No'; do
    # shellcheck disable=SC2086
    expect 2 '' "$line" --format 1.5 $wrong
done
expect 0 '[0-9]+\.[0-9]+\.[0-9]+' '' --version

expect 0 '.*"result": 0,.*"id": "[^[:space:]]+",.*"message": "Execute .*' '' --format 1.5 --json
python3 -m json.tool "$work/out" >"$work/err" || failures=$((failures + 1))
expect 6 '.*"result_name": "UnsupportedVersion",.*"id": null,.*' "$line" --format $'\xff' --json
python3 -m json.tool "$work/out" >"$work/err" || failures=$((failures + 1))

for arguments in '--format 1.5' '--format 1.5 --json' --help; do
    # shellcheck disable=SC2086
    stderr=$("$tool" $arguments 2>&1 >/dev/full)
    [[ $? == 74 && $stderr =~ ^($line)$ ]] || failures=$((failures + 1))
done

formats=(1.0 1.1 1.2 1.4 1.5)
for format in "${formats[@]}"; do
    "$tool" --format "$format" --log 2>&1
    echo "= $?"
done | "$(dirname "$0")/../tools/check_ids.py" "${formats[@]}" || failures=$((failures + 1))
exit $((failures > 0))
