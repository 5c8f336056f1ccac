#!/bin/sh
# Checks what the example consumer prints. Takes the program.
set -eu
. "$SOURCE_DIR/tests/cmake-package/common.sh"
consumer=$1

rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR"
cd "$WORK_DIR"

# prints <status> <arguments...>: the program prints what is on standard input, on its two streams together.
prints() {
    expected=$1
    shift
    cat >wanted
    if "$consumer" "$@" >log 2>errors; then status=0; else status=$?; fi
    cat errors >>log
    [ $status = "$expected" ] || fail "consumer $*: status $status"
    [ "$expected" = 0 ] || [ "$(wc -l <errors)" = 1 ] || fail "consumer $*: errors are not one line"
    cmp wanted log || fail "consumer $*: unexpected text"
}

# The whole rows of known presets. The column of names is as wide as the longest name.
presets=$SOURCE_DIR/tests/presets/golden/presets.txt
sed -n 's/^preset \(.*\):$/\1/p' "$presets" >names
width=$(wc -L <names)
"$consumer" list >log
[ "$(wc -l <log)" = $(($(wc -l <names) + 1)) ] || fail 'consumer list: not one line for each preset'
while read -r preset passes parameters animated; do
    row=$(printf "  %-${width}s  %6s  %10s  %s" "$preset" "$passes" "$parameters" "$animated")
    grep -qFx "$row" log || fail "consumer list: no line '$row'"
done <<'END'
preset passes parameters animated
crt-pvm 19 39 yes
crt-bvm 19 39 yes
crt-arcade 19 39 yes
crt-pc 19 39 yes
crt-bw 19 39 yes
crt-consumer 20 45 yes
gba-lcd 4 9 no
gameboy-lcd 4 13 no
dmg-lcd 6 13 no
no-pixels 8 3 no
rewind 3 5 yes
stock 2 0 no
END
sed '1d; s/^ *//; s/ .*//' log >listed
cmp names listed || fail 'consumer list: the presets or their order differ'
prints 0 show stock <<'END'
stock
  resource:            :/shaders/stock.glsl
  Vulkan only:         no
  animated:            no
  answers HDR itself:  no

Passes
  #  pass             format   size      samples  parameters
  0  stock            RGBA16F  viewport  source            0
  1  hdr-color-boost  RGBA16F  viewport  0                 0
END
prints 0 show rewind <<'END'
rewind
  resource:            :/shaders/rewind.glslp
  Vulkan only:         no
  animated:            yes
  answers HDR itself:  no

Passes
  #  pass             format   size      samples  parameters
  0  rewind           RGBA16F  input     source            2
  1  rewind-noise     RGBA16F  viewport  0                 3
  2  hdr-color-boost  RGBA16F  viewport  1                 0

Parameters
  parameter    value  default  min  max  step  shown as
  wiggle           3        3    0   10     1  Wiggle
  smear          0.5      0.5    0    1  0.05  Chroma Smear
  noiseAmount   0.15     0.15    0    1   0.1  noiseAmount
  lineNoise      0.3      0.3    0    1   0.1  lineNoise
  tapeSpeed        1        1    0    1   0.1  tapeSpeed
END
# Columns are as wide as other rows need.
"$consumer" show crt-pvm | tr -s ' ' >log
for row in \
    ' 0 crt-linearize RGBA16F 4096 x source source 4' \
    ' 1 crt-abl-tiles RGBA32F 256 x 240 0 0' \
    ' 5 crt-drive RGBA16F pass 0 4, 0 3' \
    ' 7 crt-persistence RGBA16F input 6, history 3' \
    ' 16 crt-phosphor-tile RGBA16F 256 x 256 - 3'; do
    grep -qFx "$row" log || fail "consumer show crt-pvm: no line '$row'"
done

# Each pass has two modules. Each preset has one pass more than it declares.
modules=$(awk '/^  passCount = / { count += 2 * ($3 + 1) } END { print count }' "$presets")
echo "all of $modules named modules are here" | prints 0 check

usage='usage: consumer check | consumer list | consumer show <preset>'
echo "$usage" | prints 1
echo "$usage" | prints 1 lists
echo "$usage" | prints 1 list stock
echo "$usage" | prints 1 show
echo "$usage" | prints 1 show stock rewind
echo "consumer: there is no preset 'stöck'; 'consumer list' names them all" | prints 1 show stöck
