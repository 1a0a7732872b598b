#!/usr/bin/env bash
# The tqsvg tool as a user meets it: exit codes, messages prefixed with the file name, standard
# input and output, directories worked through in parallel, pictures.
#   usage: tqsvg_cli_test.sh TQSVG SAMPLE
set -u
tool=$1
sample=$2
# The JSON and pixel checks need python3 (scripts/setup.sh installs it): no silent skip.
if ! command -v python3 >/dev/null; then
    echo "FAIL: python3 is missing, so the mesh JSON and the rendered pixels cannot be checked"
    exit 1
fi
work=$(mktemp -d)
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
failures=0

fail() {
    echo "FAIL: $*"; failures=$((failures + 1))
}
expect() {  # expect CODE DESCRIPTION -- COMMAND...
    local want=$1 what=$2
    shift 3
    "$@" >"$work/out" 2>"$work/err"
    local got=$?
    if [ "$got" -ne "$want" ]; then
        fail "$what: exit $got, expected $want"; cat "$work/err"
    fi
}
contains() {  # contains FILE TEXT DESCRIPTION
    if ! grep -qF -- "$2" "$1"; then
        fail "$3: '$2' not in $1:"; cat "$1"
    fi
}
# Width and height from a PNG's IHDR chunk, after checking the 8-byte signature.
png_size() {  # png_size FILE
    python3 -c 'import struct, sys
d = open(sys.argv[1], "rb").read(24)
print("%dx%d" % struct.unpack(">II", d[16:24]) if d[:8] == b"\x89PNG\r\n\x1a\n" else "not-a-png")' "$1"
}
is_png_of_size() {  # is_png_of_size FILE WxH DESCRIPTION
    local got
    got=$(png_size "$1")
    [ "$got" = "$2" ] || fail "$3: picture is $got, expected $2"
}

printf '<svg xmlns="http://www.w3.org/2000/svg"><rect width="1px"/></svg>' >"$work/bad.svg"
printf '<svg><g></svg>' >"$work/malformed.svg"
printf '<svg xmlns="http://www.w3.org/2000/svg"><text>hi</text></svg>' >"$work/empty.svg"
printf '<svg xmlns="http://www.w3.org/2000/svg"><path d="M3e38 0 l3e38 0 l0 1 z"/><rect width="1" height="1"/></svg>' >"$work/huge.svg"

expect 0 "version" -- "$tool" --version
grep -qE '^tqsvg [0-9]+\.[0-9]+\.[0-9]+\.[0-9]+' "$work/out" || fail "version text: $(cat "$work/out")"
expect 0 "help" -- "$tool" --help
contains "$work/out" "render" "help lists the commands"
expect 2 "unknown command" -- "$tool" frobnicate
expect 2 "missing argument" -- "$tool" convert "$sample"
expect 2 "no command" -- "$tool"
contains "$work/err" "Subcommands:" "help without a command"

# Output lands whole or not at all, and a refused write says why.
for args in "convert $sample" "bbox --fit $sample -o" "mesh $sample -o" "render $sample -o"; do
    expect 1 "$args onto a full device" -- "$tool" $args /dev/full
    contains "$work/err" "/dev/full: could not be written: No space left on device" "$args: the reason"
done
cp "$sample" "$work/kept.svg"
(trap '' XFSZ; ulimit -f 1; "$tool" convert --indent "$sample" "$work/kept.svg") >/dev/null 2>&1 \
    && fail "a write past the file size limit succeeded"
cmp -s "$sample" "$work/kept.svg" || fail "a failed write changed the file under its final name"
ls -a "$work" | grep -q '^\.kept' && fail "a temporary file stayed behind"

# A file the tool cannot read gets the reason in the tool's words after the library's.
echo '<svg/>' >"$work/a.xml"
: >"$work/void.svg"
expect 1 "unreadable inputs" -- "$tool" check "$work/a.xml" "$work/no/dir" "$work/void.svg"
contains "$work/err" "$work/a.xml: no driver reads the extension \".xml\"" "why not .xml"
contains "$work/err" "$work/no/dir: the file could not be opened: No such file or directory" "why not a missing folder"
contains "$work/err" "$work/void.svg: The document is empty" "why not an empty file"
grep -q "Extra content" "$work/err" && fail "an empty file called extra content"

# The commands agree on what a usable document is: one whose root draws nothing is refused by all.
printf '<style>rect{fill:red}</style>' >"$work/style-root.svg"
for args in "check" "check --subset" "render -o $work/style-root.png" "bbox" "mesh -o $work/s.json"; do
    # shellcheck disable=SC2086
    expect 1 "$args of a document whose root is a style sheet" -- "$tool" $args "$work/style-root.svg"
done
# Compressed files are found in folders and read as their text; their copies are plain .svg.
mkdir -p "$work/zipped/in"
gzip -c "$sample" >"$work/zipped/in/sample.svgz"
expect 0 "check of a folder holding a .svgz" -- "$tool" check "$work/zipped/in"
contains "$work/out" "1 loaded, 0 failed" "the .svgz file is found and read"
expect 0 "convert of a folder holding a .svgz" -- "$tool" convert "$work/zipped/in" "$work/zipped/out"
[ -f "$work/zipped/out/sample.svg" ] || fail "the copy of a .svgz file is not named .svg"

# What every command shares: help, usage errors, and failures named after the file.
for command in check convert mesh bbox render; do
    expect 0 "$command --help" -- "$tool" "$command" --help
    contains "$work/out" "Usage: tqsvg $command" "$command help"
    expect 2 "$command with an unknown option" -- "$tool" "$command" --frobnicate "$sample"
done
while IFS='|' read -r what args; do
    for input in missing malformed; do
        # shellcheck disable=SC2086
        expect 1 "$what of a $input file" -- "$tool" ${args//IN/$work/$input.svg}
        contains "$work/err" "$work/$input.svg: " "$what names the $input file"
    done
done <<EOF
check|check IN
convert|convert IN $work/x.svg
mesh|mesh IN
bbox|bbox IN
render|render IN -o $work/x.png
EOF
contains "$work/err" "$work/malformed.svg: line 1" "malformed XML gives its position"
while IFS='|' read -r what args; do
    # shellcheck disable=SC2086
    expect 1 "$what to an unwritable place" -- "$tool" $args
    contains "$work/err" "$work/no/such/dir/" "$what names the output"
done <<EOF
convert|convert $sample $work/no/such/dir/out.svg
mesh|mesh $sample -o $work/no/such/dir/m.json
bbox --fit|bbox --fit $sample -o $work/no/such/dir/f.svg
render|render $sample -o $work/no/such/dir/p.png
EOF
[ -e "$work/no" ] && fail "a single output must not create folders"

expect 0 "check sample" -- "$tool" check "$sample"
contains "$work/out" "1 loaded, 0 failed" "summary of a good file"
# The library's strict subset refuses what it does not have; the default reading draws it.
expect 1 "check bad" -- "$tool" check --subset "$sample" "$work/bad.svg" "$work/missing.svg" "$work/malformed.svg"
contains "$work/out" "1 loaded, 3 failed, 0 warnings; 1 of them load without --subset" "summary of bad files"
contains "$work/err" "$work/bad.svg: Failed to parse value \"1px\" in attribute \"width\"" "detail line"
contains "$work/err" "$work/missing.svg: Fail to open file" "missing file"
expect 0 "check ignoring" -- "$tool" check --subset --ignore-unsupported "$work/bad.svg"
contains "$work/err" "Ignore Invalid attribute \"width\" with value \"1px\"" "warning line"
contains "$work/out" "1 loaded, 0 failed, 2 warnings" "warnings counted"
expect 0 "check as browsers read" -- "$tool" check "$work/bad.svg"
contains "$work/out" "1 loaded, 0 failed, 0 warnings" "a length with a unit reads"
printf '<svg xmlns="http://www.w3.org/2000/svg"><g id="a"><use href="#a"/></g></svg>' >"$work/loop.svg"
expect 1 "check a reference loop" -- "$tool" check "$work/loop.svg"
contains "$work/err" "$work/loop.svg: Element \"use\" references itself or an ancestor: \"#a\"" "loop refused"

# Without a style sheet: a sheet gains its CDATA-in-comments wrapper on every save.
grep -v -e '<style>' -e '</style>' -e '\.outline' "$sample" >"$work/plain.svg"
expect 0 "convert to stdout" -- "$tool" convert --subset --no-header "$work/plain.svg" -
cp "$work/out" "$work/first.svg"
expect 0 "convert stdin to file" -- sh -c "'$tool' convert --subset --no-header - '$work/second.svg' <'$work/first.svg'"
cmp -s "$work/first.svg" "$work/second.svg" || fail "save, load, save is not byte-identical"
expect 0 "convert with options" -- "$tool" convert --indent --precision 3 --author Ada "$sample" "$work/third.svg"
contains "$work/third.svg" "<!--Author : Ada-->" "author comment"
expect 1 "convert a bad file" -- "$tool" convert --subset "$work/bad.svg" "$work/x.svg"

# A tree of files: nested folders, other files, an upper-case extension, failures among them.
tree=$work/tree
mkdir -p "$tree/a/b" "$tree/c" "$tree/empty"
for name in a/s1 a/s2 a/s3 a/s4 a/b/deep c/z c/y; do cp "$work/plain.svg" "$tree/$name.svg"; done
cp "$work/plain.svg" "$tree/c/UPPER.SVG"
cp "$work/bad.svg" "$tree/a/bad.svg"
cp "$work/malformed.svg" "$tree/c/malformed.svg"
echo "not svg" >"$tree/c/notes.txt"
expect 1 "check a directory" -- "$tool" check --subset -j 1 --verbose "$tree"
contains "$work/out" "8 loaded, 2 failed, 0 warnings" "summary of a directory"
grep -o '^\[[0-9/]*\] .*' "$work/err" >"$work/order"
cat >"$work/order.expected" <<EOF
[1/10] $tree/a/b/deep.svg
[2/10] $tree/a/bad.svg
[3/10] $tree/a/s1.svg
[4/10] $tree/a/s2.svg
[5/10] $tree/a/s3.svg
[6/10] $tree/a/s4.svg
[7/10] $tree/c/UPPER.SVG
[8/10] $tree/c/malformed.svg
[9/10] $tree/c/y.svg
[10/10] $tree/c/z.svg
EOF
diff "$work/order.expected" "$work/order" || fail "directory walk order"
expect 0 "check a directory quietly" -- "$tool" check --subset "$tree/a/b" "$tree/empty"
[ -s "$work/err" ] && fail "check without --verbose off a terminal prints per-file lines"
grep -q $'[\r\033]' "$work/err" "$work/out" && fail "bar control characters off a terminal"

# The same output whatever the number of jobs: messages, summaries and the files written.
for jobs in 1 2; do
    "$tool" check --subset -j "$jobs" "$tree" >"$work/check$jobs.out" 2>"$work/check$jobs.err"
    "$tool" convert --subset -j "$jobs" --no-header "$tree" "$work/conv$jobs" >"$work/conv$jobs.out" 2>"$work/conv$jobs.err"
    "$tool" render --subset -j "$jobs" --size 40 "$tree" -o "$work/png$jobs" >"$work/png$jobs.out" 2>"$work/png$jobs.err"
done
for what in check conv png; do
    cmp -s "$work/${what}1.out" "$work/${what}2.out" || fail "$what: stdout differs between -j 1 and -j 2"
    cmp -s "$work/${what}1.err" "$work/${what}2.err" || fail "$what: stderr differs between -j 1 and -j 2"
done
diff -r "$work/conv1" "$work/conv2" >/dev/null || fail "convert -j 1 and -j 2 wrote different files"
diff -r "$work/png1" "$work/png2" >/dev/null || fail "render -j 1 and -j 2 drew different pictures"
contains "$work/conv1.out" "8 converted, 2 failed" "convert summary"
contains "$work/conv1.err" "$tree/a/bad.svg: Failed to parse" "convert names the failing file"
cmp -s "$work/conv1/a/b/deep.svg" "$work/first.svg" || fail "convert of a directory keeps relative paths"
[ -e "$work/conv1/c/notes.txt" ] && fail "convert copied a file that is not SVG"
is_png_of_size "$work/png1/c/UPPER.png" 40x30 "render of a directory"

# An output folder inside the input folder is not converted again on the next run.
cp -r "$tree/a/b" "$work/nest"
expect 0 "convert into a subfolder" -- "$tool" convert "$work/nest" "$work/nest/out"
expect 0 "convert into a subfolder again" -- "$tool" convert "$work/nest" "$work/nest/out"
contains "$work/out" "1 converted, 0 failed" "the output folder is left out"
expect 2 "convert a directory to stdout" -- "$tool" convert "$tree" -
expect 2 "convert a directory onto a file" -- "$tool" convert "$tree" "$work/plain.svg"
expect 0 "convert a file into a directory" -- "$tool" convert "$work/plain.svg" "$work/nest"
[ -f "$work/nest/plain.svg" ] || fail "convert into a directory keeps the file name"

# Root reads any directory, so only another user can see one that cannot be read.
if [ "$(id -u)" -ne 0 ]; then
    mkdir -p "$work/locked/inner"
    cp "$work/plain.svg" "$work/locked/inner/x.svg"
    cp "$work/plain.svg" "$work/locked/ok.svg"
    chmod 000 "$work/locked/inner"
    expect 1 "check an unreadable directory" -- "$tool" check "$work/locked"
    contains "$work/err" "$work/locked/inner: the directory could not be read" "unreadable directory"
    contains "$work/out" "1 loaded, 1 failed" "an unreadable directory counts as failed"
    chmod 755 "$work/locked/inner"
else
    echo "note: the unreadable-directory check needs a user other than root: not run"
fi

# mesh: JSON on standard output or in a file, statistics instead with --stats.
expect 0 "mesh to stdout" -- "$tool" mesh "$sample"
contains "$work/out" '"error":false' "mesh error flag"
python3 -c 'import json,sys; d=json.load(open(sys.argv[1])); assert len(d["primitives"]) == 8, len(d["primitives"]); assert all(len(p["triangles"]) % 3 == 0 and len(p["strokeTriangles"]) % 3 == 0 for p in d["primitives"]); assert sum(1 for p in d["primitives"] if p["stroke"][3] > 0 and p["strokeTriangles"]) >= 2' "$work/out" ||
    fail "mesh output is not the expected JSON, with stroke triangles for the stroked shapes"
expect 0 "mesh to file" -- "$tool" mesh "$sample" -o "$work/mesh.json"
contains "$work/mesh.json" '"primitives":[' "mesh file"
expect 0 "mesh stats" -- "$tool" mesh --stats "$sample"
contains "$work/out" "primitives: 8" "mesh statistics"
grep -qE '^stroke triangles: [1-9]' "$work/out" || fail "mesh statistics count stroke triangles"
expect 1 "mesh of an unfillable shape" -- "$tool" mesh "$work/huge.svg"
contains "$work/out" '"error":true' "mesh reports the failure"
contains "$work/err" "$work/huge.svg: a filled shape could not be triangulated" "mesh failure message"
contains "$work/err" "$work/huge.svg: svg: " "library log lines name the file"

# bbox: x y width height of the content, or the document refitted with --fit.
printf '<svg xmlns="http://www.w3.org/2000/svg"><g transform="translate(10 20)"><rect x="1" y="2" width="3" height="4"/></g><line x1="-5" y1="0" x2="0" y2="0"/></svg>' >"$work/box.svg"
printf '<svg xmlns="http://www.w3.org/2000/svg"><path d="M0 0C0 10 10 10 10 0"/></svg>' >"$work/curve.svg"
expect 0 "bbox" -- "$tool" bbox "$work/box.svg"
contains "$work/out" "-5 0 19 26" "bbox numbers"
expect 0 "bbox of a curve" -- "$tool" bbox "$work/curve.svg" "$work/box.svg"
contains "$work/out" "$work/curve.svg: 0 0 10 7.4" "a curve's extent, one line a file"
expect 0 "bbox of nothing" -- "$tool" bbox "$work/empty.svg"
contains "$work/out" "empty" "empty bbox"
expect 0 "bbox fit" -- "$tool" bbox --fit "$work/box.svg" -o "$work/fitted.svg"
contains "$work/fitted.svg" 'viewBox="-5 0 19 26"' "fitted viewBox"
# A stroke's width and caps count, under both profiles.
printf '<svg xmlns="http://www.w3.org/2000/svg"><line x2="10" stroke="red" stroke-width="2" stroke-linecap="square"/></svg>' >"$work/stroke.svg"
for profile in "" --subset; do
    expect 0 "bbox of a stroke $profile" -- "$tool" bbox $profile "$work/stroke.svg"
    contains "$work/out" "-1 -1 12 2" "a stroke's extent $profile"
done

# render: the picture's size follows the viewBox, else the content, else 100 by 100.
printf '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 10 40"><rect width="10" height="40"/></svg>' >"$work/tall.svg"
while IFS='|' read -r what input options size; do
    # shellcheck disable=SC2086
    expect 0 "render $what" -- "$tool" render "$work/$input" -o "$work/r.png" $options
    is_png_of_size "$work/r.png" "$size" "render $what"
done <<EOF
sample|plain.svg||512x384
sample small|plain.svg|--size 64|64x48
tall viewBox|tall.svg|--size 100|25x100
content extent|box.svg|--size 190|139x190
nothing to measure|empty.svg||512x512
EOF
expect 0 "render stdin to stdout" -- sh -c "'$tool' render - -o - --size 32 <'$sample'"
is_png_of_size "$work/out" 32x24 "render to standard output"
expect 2 "render with a bad colour" -- "$tool" render "$sample" -o "$work/r.png" --background nope
expect 2 "render with size 0" -- "$tool" render "$sample" -o "$work/r.png" --size 0
expect 2 "render several files to stdout" -- "$tool" render "$sample" "$work/plain.svg" -o -
expect 2 "render two files onto one picture" -- "$tool" render "$sample" "$sample" -o "$work/two"
expect 0 "render an unfillable shape" -- "$tool" render "$work/huge.svg" -o "$work/r.png"
contains "$work/err" "$work/huge.svg: warning: a filled shape could not be triangulated" "render warns"
expect 0 "render with a wireframe" -- "$tool" render --wireframe "$sample" -o "$work/wire.png"
expect 0 "render" -- "$tool" render "$sample" -o "$work/sample.png"
cmp -s "$work/wire.png" "$work/sample.png" && fail "the wireframe changed nothing"
# Strokes are drawn from the library's triangles, their wireframe too.
expect 0 "render a stroke" -- "$tool" render "$work/stroke.svg" -o "$work/stroke.png" --size 60
is_png_of_size "$work/stroke.png" 60x10 "a stroke's extent frames the picture"
expect 0 "render a stroke's wireframe" -- "$tool" render --wireframe "$work/stroke.svg" -o "$work/stroke-wire.png" --size 60
cmp -s "$work/stroke.png" "$work/stroke-wire.png" && fail "the wireframe left out the stroke triangles"
expect 0 "render on a background" -- "$tool" render --background 'rgb(255,0,0)' "$work/empty.svg" -o "$work/red.png" --size 8
expect 0 "render transparent" -- "$tool" render "$work/empty.svg" -o "$work/clear.png" --size 8
# A frame on half pixels covers the two rows half each, as the reference renderers draw it; a
# trapezoid's last half-flat pair of triangles is no rectangle.
printf '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 16 16"><rect x="1" y="1" width="14" height="14" fill="none" stroke="#000"/><path d="M5 2 L5 8 L11 14 L11 2 Z"/></svg>' >"$work/half.svg"
expect 0 "render on half pixels" -- "$tool" render "$work/half.svg" -o "$work/half.png" --size 16
# Content starts at the top-left corner, as other renderers put it: the picture's rounded height
# (2.67 to 3 pixels) leaves its slack at the bottom.
printf '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 3 2"><rect width="3" height="1"/></svg>' >"$work/slack.svg"
expect 0 "render with rounding slack" -- "$tool" render "$work/slack.svg" -o "$work/slack.png" --size 4

# Pixels of the sample (scale 1.28): fills with opacity, the square hole, the star's centre
# under the non-zero rule, a stroke; and the background.
cat >"$work/pixel.py" <<'EOF'
import struct, sys, zlib
def pixel(path, x, y):
    data = open(path, 'rb').read()
    pos, idat = 8, b''
    while pos < len(data):
        length, kind = struct.unpack('>I4s', data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        if kind == b'IHDR':
            width, height, depth, colour = struct.unpack('>IIBB', body[:10])
        elif kind == b'IDAT':
            idat += body
        pos += 12 + length
    channels = {2: 3, 6: 4}[colour]
    raw, stride, rows, prev = zlib.decompress(idat), width * channels, [], bytearray(width * channels)
    for r in range(height):
        kind, row = raw[r * (stride + 1)], bytearray(raw[r * (stride + 1) + 1:(r + 1) * (stride + 1)])
        for i in range(stride):
            a = row[i - channels] if i >= channels else 0
            b, c = prev[i], prev[i - channels] if i >= channels else 0
            p = a + b - c
            pred = [0, a, b, (a + b) // 2,
                    a if abs(p - a) <= abs(p - b) and abs(p - a) <= abs(p - c) else b if abs(p - b) <= abs(p - c) else c][kind]
            row[i] = (row[i] + pred) & 255
        rows.append(row)
        prev = row
    px = list(rows[y][x * channels:(x + 1) * channels])
    return px + [255] * (4 - len(px))
failed = 0
for line in sys.stdin:
    what, path, *numbers = line.split()
    x, y, *want = map(int, numbers)
    got = pixel(path, x, y)
    if any(abs(g - w) > 3 for g, w in zip(got, want)):
        print(f'FAIL: pixel {what} at {x},{y}: {got}, expected {want}')
        failed += 1
sys.exit(1 if failed else 0)
EOF
python3 "$work/pixel.py" <<EOF || fail "rendered pixels"
background $work/sample.png 5 370 241 250 238 255
circle $work/sample.png 281 76 233 111 117 255
frame $work/sample.png 48 243 69 123 157 255
hole $work/sample.png 102 243 241 250 238 255
star-centre $work/sample.png 384 256 233 196 106 255
line-stroke $work/sample.png 422 77 86 136 165 255
red $work/red.png 4 4 255 0 0 255
stroke-cap $work/stroke.png 2 5 255 0 0 255
clear $work/clear.png 4 4 0 0 0 0
frame-outer-row $work/half.png 12 0 0 0 0 128
frame-inner-row $work/half.png 12 1 0 0 0 128
below-trapezoid $work/half.png 6 12 0 0 0 0
slack-at-the-bottom $work/slack.png 1 1 0 0 0 85
EOF

if [ "$failures" -ne 0 ]; then
    echo "$failures check(s) failed"
    exit 1
fi
echo "all tool checks passed"
