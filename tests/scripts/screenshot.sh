#!/bin/sh
# scripts/screenshot writes a picture of the window, and none if the window does not open.
set -eu

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR"
cd "$WORK_DIR"

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

RENDER_GRAPH_PREVIEW=$PREVIEW "$SOURCE_DIR/scripts/screenshot" "$WORK_DIR/window.jpg" 2>log || fail "$(cat log)"
jpegtopnm -quiet window.jpg >window.ppm
[ "$(pamfile -machine window.ppm | sed 's,.*: ,,')" = 'PPM RAW 1280 860 3 255 RGB' ] || fail 'the size differs'
# The title screen is dark violet, the window around it is light grey.
pamcut -left 100 -top 120 -width 600 -height 400 window.ppm | pamsumm -mean -brief >picture
pamcut -left 1000 -top 60 -width 280 -height 800 window.ppm | pamsumm -mean -brief >panel
awk '{ mean[NR] = $1 } END { exit !(mean[1] > 20 && mean[1] < 120 && mean[2] > 180) }' picture panel ||
    fail "the picture's mean is $(cat picture), the panel's $(cat panel)"

rm window.jpg
printf '#!/bin/sh\nexit 1\n' >broken
chmod +x broken
! RENDER_GRAPH_PREVIEW=$WORK_DIR/broken "$SOURCE_DIR/scripts/screenshot" "$WORK_DIR/window.jpg" 2>log ||
    fail 'it succeeded without a window'
[ ! -e window.jpg ] || fail 'there is a picture without a window'
