#!/usr/bin/env bash
# What the library's own hostile-XML test cannot see, checked on the tool: each document is
# refused (exit 1) within 20 seconds and 1 GiB of address space, with a message that names the
# file and without libxml2's own diagnostics on standard error.
#   usage: hostile_check_test.sh TQSVG [SANITIZERS]
# The address-space bound is left out when the tool is built with sanitizers (SANITIZERS not
# empty): AddressSanitizer reserves terabytes of virtual memory at start-up.
set -u
tool=$1
sanitizers=${2:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# perl is part of every Debian system; it writes the large inputs quickly.
gen() {  # gen NAME PERL-EXPRESSION-PRINTING-THE-DOCUMENT
    perl -e "binmode STDOUT; $2" >"$work/$1.svg"
}
gen quadratic_blowup '
    print "<!DOCTYPE svg [<!ENTITY a \"", "x" x 100000, "\">]><svg><text>";
    print "&a;" x 100000, "</text></svg>";'
gen huge_attribute 'print "<svg><rect id=\"", "a" x (100 * 1024 * 1024), "\"/></svg>";'
gen deep_nesting 'print "<svg>", "<g>" x 100000, "</g>" x 100000, "</svg>";'
gen encoding_mismatch 'print "<?xml version=\"1.0\" encoding=\"ISO-2022-JP\"?><svg><rect/>\x1b\$B\xff\xff</svg>";'
gen garbage 'srand(42); print map { chr(int(rand(256))) } 1 .. 1048576;'

for file in "$work"/*.svg; do
    name=$(basename "$file" .svg)
    (
        [ -z "$sanitizers" ] && ulimit -v $((1024 * 1024))
        exec timeout 20 "$tool" check "$file"
    ) >/dev/null 2>"$work/err"
    code=$?
    if [ "$code" -ne 1 ]; then
        echo "FAIL: $name: exit $code (124: timed out), expected a refusal (exit 1)"
        failures=$((failures + 1))
    elif ! grep -qF -- "$file: " "$work/err"; then
        echo "FAIL: $name: no message naming the file"
        failures=$((failures + 1))
    fi
    # libxml2 prints what it raises outside a parser as "<domain> error : ..." on its own.
    if grep -qE -- '^[A-Za-z/ ]*(error|warning) : |^xmlParseChunk' "$work/err"; then
        echo "FAIL: $name: libxml2's own diagnostics on standard error"
        failures=$((failures + 1))
    fi
    [ "$code" -ne 1 ] || [ "$failures" -ne 0 ] && head -c 2000 "$work/err"
    echo "$name: exit $code"
done

[ "$failures" -eq 0 ] || { echo "$failures failure(s)"; exit 1; }
echo "all hostile documents refused${sanitizers:+ (no address-space bound: sanitizers)}"
