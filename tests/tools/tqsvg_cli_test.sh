#!/usr/bin/env bash
# The tqsvg tool as a user meets it: exit codes, messages prefixed with the file name, standard
# input and output.   usage: tqsvg_cli_test.sh TQSVG SAMPLE
set -u
tool=$1
sample=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

expect() {  # expect CODE DESCRIPTION -- COMMAND...
    local want=$1 what=$2
    shift 3
    "$@" >"$work/out" 2>"$work/err"
    local got=$?
    if [ "$got" -ne "$want" ]; then
        echo "FAIL: $what: exit $got, expected $want"; cat "$work/err"; failures=$((failures + 1))
    fi
}
contains() {  # contains FILE TEXT DESCRIPTION
    if ! grep -qF -- "$2" "$1"; then
        echo "FAIL: $3: '$2' not in $1:"; cat "$1"; failures=$((failures + 1))
    fi
}

printf '<svg xmlns="http://www.w3.org/2000/svg"><rect width="1px"/></svg>' >"$work/bad.svg"
printf '<svg><g></svg>' >"$work/malformed.svg"

expect 0 "version" -- "$tool" --version
contains "$work/out" "3.0.0.1297" "version text"
expect 0 "help" -- "$tool" --help
contains "$work/out" "convert" "help lists the commands"
expect 2 "unknown command" -- "$tool" frobnicate
expect 2 "unknown option" -- "$tool" check --frobnicate "$sample"
expect 2 "missing argument" -- "$tool" convert "$sample"

expect 0 "check sample" -- "$tool" check "$sample"
contains "$work/out" "1 loaded, 0 failed" "summary of a good file"
expect 1 "check bad" -- "$tool" check "$sample" "$work/bad.svg" "$work/missing.svg" "$work/malformed.svg"
contains "$work/out" "1 loaded, 3 failed" "summary of bad files"
contains "$work/err" "$work/bad.svg: Failed to parse value \"1px\" in attribute \"width\"" "detail line"
contains "$work/err" "$work/missing.svg: Fail to open file" "missing file"
contains "$work/err" "$work/malformed.svg: " "malformed XML"
expect 0 "check ignoring" -- "$tool" check --ignore-unsupported "$work/bad.svg"
contains "$work/err" "Ignore Invalid attribute \"width\" with value \"1px\"" "warning line"

# Without a style sheet: a sheet gains its CDATA-in-comments wrapper on every save.
grep -v -e '<style>' -e '</style>' -e '\.outline' "$sample" >"$work/plain.svg"
expect 0 "convert to stdout" -- "$tool" convert --no-header "$work/plain.svg" -
cp "$work/out" "$work/first.svg"
expect 0 "convert stdin to file" -- sh -c "'$tool' convert --no-header - '$work/second.svg' <'$work/first.svg'"
if ! cmp -s "$work/first.svg" "$work/second.svg"; then
    echo "FAIL: save, load, save is not byte-identical"; failures=$((failures + 1))
fi
expect 0 "convert with options" -- "$tool" convert --indent --precision 3 --author Ada "$sample" "$work/third.svg"
contains "$work/third.svg" "<!--Author : Ada-->" "author comment"
expect 1 "unwritable output" -- "$tool" convert "$sample" "$work/no/such/dir/out.svg"
contains "$work/err" "Fail to open file" "unwritable output message"
expect 1 "bad input to convert" -- "$tool" convert "$work/bad.svg" "$work/x.svg"

# mesh: JSON on standard output or in a file, statistics instead with --stats.
expect 0 "mesh to stdout" -- "$tool" mesh "$sample"
contains "$work/out" '"error":false' "mesh error flag"
contains "$work/out" '"triangles":[' "mesh triangles"
if command -v python3 >/dev/null; then
    if ! python3 -c 'import json,sys; d=json.load(open(sys.argv[1])); assert len(d["primitives"]) == 8, len(d["primitives"]); assert all(len(p["triangles"]) % 3 == 0 for p in d["primitives"])' "$work/out"; then
        echo "FAIL: mesh output is not the expected JSON"; failures=$((failures + 1))
    fi
fi
expect 0 "mesh to file" -- "$tool" mesh "$sample" -o "$work/mesh.json"
contains "$work/mesh.json" '"primitives":[' "mesh file"
expect 0 "mesh stats" -- "$tool" mesh --stats "$sample"
contains "$work/out" "primitives: 8" "mesh statistics"
expect 1 "mesh of a bad file" -- "$tool" mesh "$work/bad.svg"
expect 1 "mesh to an unwritable file" -- "$tool" mesh "$sample" -o "$work/no/such/dir/m.json"
printf '<svg xmlns="http://www.w3.org/2000/svg"><path d="M0 0 L1e39 0 L0 1 Z"/><rect width="1" height="1"/></svg>' >"$work/huge.svg"
expect 1 "mesh of an unfillable shape" -- "$tool" mesh "$work/huge.svg"
contains "$work/out" '"error":true' "mesh reports the failure"
contains "$work/err" "could not be triangulated" "mesh failure message"

# bbox: x y width height of the content, or the document refitted with --fit.
printf '<svg xmlns="http://www.w3.org/2000/svg"><g transform="translate(10 20)"><rect x="1" y="2" width="3" height="4"/></g><line x1="-5" y1="0" x2="0" y2="0"/></svg>' >"$work/box.svg"
expect 0 "bbox" -- "$tool" bbox "$work/box.svg"
contains "$work/out" "-5 0 19 26" "bbox numbers"
printf '<svg xmlns="http://www.w3.org/2000/svg"><text>hi</text></svg>' >"$work/empty.svg"
expect 0 "bbox of nothing" -- "$tool" bbox "$work/empty.svg"
contains "$work/out" "empty" "empty bbox"
expect 0 "bbox fit" -- "$tool" bbox --fit "$work/box.svg" -o "$work/fitted.svg"
contains "$work/fitted.svg" 'viewBox="-5 0 19 26"' "fitted viewBox"
expect 1 "bbox of a missing file" -- "$tool" bbox "$work/missing.svg"

if [ "$failures" -ne 0 ]; then
    echo "$failures check(s) failed"
    exit 1
fi
echo "all tool checks passed"
