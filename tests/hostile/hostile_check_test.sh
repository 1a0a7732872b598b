#!/usr/bin/env bash
# `tqsvg check` on generated hostile documents, each under bounds: every one must be refused
# (exit 1) with a message naming the file (and no stray diagnostics of libxml2's) on standard
# error, within 20 seconds and 1 GiB of address space, and nothing from a local file an entity
# names may reach the output. A DTD on the network may
# instead be ignored (exit 0), but never fetched: within the time bound, a connection attempt to
# the discard port would show as the refusal or the timeout it meets.
#   usage: hostile_check_test.sh TQSVG [SANITIZERS]
# The address-space bound (ulimit -v) is left out when the tool is built with sanitizers
# (SANITIZERS not empty): AddressSanitizer reserves terabytes of virtual memory at start-up.
set -u
tool=$1
sanitizers=${2:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

limit_kib=$((1024 * 1024))  # 1 GiB of address space for the tool
seconds=20

# perl is part of every Debian system; it writes the large and repetitive inputs quickly.
gen() {  # gen NAME PERL-EXPRESSION-PRINTING-THE-DOCUMENT
    perl -e "binmode STDOUT; $2" >"$work/$1.svg"
}

gen billion_laughs '
    print "<!DOCTYPE svg [<!ENTITY l0 \"ha\">";
    print "<!ENTITY l$_ \"", ("&l" . ($_ - 1) . ";") x 10, "\">" for 1 .. 10;
    print "]><svg><text>&l10;</text></svg>";'
gen quadratic_blowup '
    print "<!DOCTYPE svg [<!ENTITY a \"", "x" x 100000, "\">]><svg><text>";
    print "&a;" x 100000, "</text></svg>";'
gen deep_nesting 'print "<svg>", "<g>" x 100000, "</g>" x 100000, "</svg>";'
gen huge_attribute 'print "<svg><rect id=\"", "a" x (100 * 1024 * 1024), "\"/></svg>";'
gen truncated 'print "<svg><g><rect x=\"1";'
gen invalid_utf8 'print "<svg><r\xff\xfeect id=\"\xc3\x28\"/></svg>";'
gen encoding_mismatch 'print "<?xml version=\"1.0\" encoding=\"ISO-2022-JP\"?><svg><rect/>\x1b\$B\xff\xff</svg>";'
gen nul_byte 'print "<svg>\0<rect/></svg>";'
gen garbage 'srand(42); print map { chr(int(rand(256))) } 1 .. 1048576;'
gen network_dtd 'print "<!DOCTYPE svg SYSTEM \"http://127.0.0.1:9/x.dtd\"><svg><text>&x;</text></svg>";'
secret="tqsvg-hostile-secret-5e81"
printf '%s' "$secret" >"$work/secret.txt"
gen local_entity "print '<!DOCTYPE svg [<!ENTITY x SYSTEM \"file://$work/secret.txt\">]><svg><text>&x;</text></svg>';"

for file in "$work"/*.svg; do
    name=$(basename "$file" .svg)
    start=$(date +%s)
    (
        if [ -z "$sanitizers" ]; then
            ulimit -v "$limit_kib"
        fi
        exec timeout "$seconds" "$tool" check "$file"
    ) >"$work/out" 2>"$work/err"
    code=$?
    elapsed=$(($(date +%s) - start))
    expected=1
    if [ "$name" = network_dtd ] && [ "$code" -eq 0 ]; then
        expected=0  # an external subset may be ignored (with a warning) instead of refused
    fi
    if [ "$code" -ne "$expected" ]; then
        case "$code" in
            124) why="timed out after ${seconds}s" ;;
            0) why="accepted" ;;
            *) why="exit $code" ;;
        esac
        echo "FAIL: $name: $why (expected a refusal, exit 1)"
        head -c 2000 "$work/err"
        failures=$((failures + 1))
    elif ! grep -qF -- "$file: " "$work/err" && [ "$code" -ne 0 ]; then
        echo "FAIL: $name: no message naming the file"
        head -c 2000 "$work/err"
        failures=$((failures + 1))
    fi
    # libxml2 prints what it raises outside a parser as "<domain> error : ..." on its own.
    if grep -qE -- '^[A-Za-z/ ]*(error|warning) : |^xmlParseChunk' "$work/err"; then
        echo "FAIL: $name: libxml2's own diagnostics on standard error:"
        grep -E -- '^[A-Za-z/ ]*(error|warning) : |^xmlParseChunk' "$work/err" | head -c 2000
        failures=$((failures + 1))
    fi
    if grep -qF -- "$secret" "$work/out" "$work/err"; then
        echo "FAIL: $name: the content of a local file reached the output"
        failures=$((failures + 1))
    fi
    echo "$name: exit $code in ${elapsed}s"
done

if [ "$failures" -ne 0 ]; then
    echo "$failures failure(s)"
    exit 1
fi
echo "all hostile documents refused within ${seconds}s${sanitizers:+ (no address-space bound: sanitizers)}"
