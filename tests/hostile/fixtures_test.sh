#!/usr/bin/env bash
# The tool on files that crashed or hung SVG renderers once, and on SVG 1.1's own test cases: the
# crash and render-crash fixtures and every reference test (SVG 1.1's cases among them) of
# Debian's librsvg2-tests. Each folder is checked and drawn by one process of the tool, which must
# end with a verdict (exit 0 or 1) within TIMEOUT seconds and without a sanitizer report; a failing
# folder is run again a file at a time to name the file. The package is downloaded and extracted
# into a cache outside the repository; exits 77 (skipped) when it is neither cached nor
# downloadable.
#   usage: fixtures_test.sh TQSVG [TIMEOUT]        TIMEOUT defaults to 300
set -uo pipefail
tool=$(realpath "$1")
limit=${2:-300}
here=$(dirname "$(realpath "$0")")
cache=${TQSVG_W3C_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tqsvg-w3c}
package=$("$here/../icons/debian_package.sh" "$cache" librsvg2-tests)
status=$?
[ "$status" -eq 0 ] || exit "$status"
fixtures=$package/usr/libexec/installed-tests/RSVG/fixtures
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
jobs=$(nproc 2>/dev/null || echo 2)

# run LIMIT COMMAND...: true when the command ends with a verdict and no sanitizer report.
run() {
    local limit=$1
    shift
    timeout "$limit" "$@" >/dev/null 2>"$work/err"
    local code=$?
    ! grep -qE 'ERROR: [A-Za-z]+Sanitizer|runtime error: ' "$work/err" && [ "$code" -le 1 ] && return 0
    echo "exit $code (124 is a time-out): $*"
    grep -E -A12 'ERROR: [A-Za-z]+Sanitizer|runtime error: ' "$work/err" | head -n 40
    return 1
}

for folder in crash render-crash reftests; do
    count=$(find "$fixtures/$folder" -name '*.svg' | wc -l)
    for command in check render; do
        output=()
        # Small pictures: drawing them large costs time in cairo, not in the library.
        [ "$command" = render ] && output=(--size 128 -o "$work/pictures")
        start=$SECONDS
        if ! run "$limit" "$tool" "$command" -j "$jobs" "${output[@]}" "$fixtures/$folder"; then
            failures=$((failures + 1))
            find "$fixtures/$folder" -name '*.svg' | sort | while read -r file; do
                [ "$command" = render ] && output=(--size 128 -o "$work/picture.png")
                run "$limit" "$tool" "$command" "${output[@]}" "$file" || true
            done
        fi
        echo "$folder: $command of $count files in $((SECONDS - start)) s"
        rm -rf "$work/pictures"
    done
done
[ "$failures" -eq 0 ] || { echo "FAIL: $failures of 6 runs crashed, hung or drew a sanitizer report"; exit 1; }
echo "every fixture checked and drawn"
